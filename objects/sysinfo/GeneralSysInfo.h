#pragma once

// The facts about the machine for scripts. The first member that is read gathers all of them, which
// may take seconds; GetSystemInfo gathers them on a worker and tells by OnGeneralSysInfoComplete,
// on the script's thread, when they are there or, called again, renewed.
//
// One snapshot is gathered at a time. A member that is read while the first one is being gathered
// waits for it; while a later one is being gathered, members answer from the one before. Gathering
// never waits for the object's thread, so neither does it wait for ever.

#include "ZelBase/threads/LocalMutex.h"
#include "component/Automation.h"
#include "component/Completions.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"
#include "component/PostbackWindow.h"
#include "objects/sysinfo/SystemSnapshot.h"

#include <TERVANELib.h>

#include <memory>
#include <optional>

namespace tervane {

class GeneralSysInfo final : public AutomationObject<IGeneralSysInfo, EventSource, Control>,
                             private PostbackOwner {
public:
    GeneralSysInfo(const ClassRow& row, IUnknown* outer)
        : Object(row, outer), completions_(std::make_shared<Completions>()) {}

    HRESULT STDMETHODCALLTYPE get_CpuSpeed(long* value) override;
    HRESULT STDMETHODCALLTYPE get_CpuVendor(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_CpuDescription(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_CpuFamily(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_RamSize(long* value) override;
    HRESULT STDMETHODCALLTYPE get_SystemDriveIndex(long* value) override;
    HRESULT STDMETHODCALLTYPE get_SystemDriveTotalSize(long* value) override;
    HRESULT STDMETHODCALLTYPE get_SystemDriveFreeSpace(long* value) override;
    HRESULT STDMETHODCALLTYPE get_LargestFreeDriveIndex(long* value) override;
    HRESULT STDMETHODCALLTYPE get_LargestFreeDriveSpace(long* value) override;
    HRESULT STDMETHODCALLTYPE get_NumDrives(long* value) override;
    HRESULT STDMETHODCALLTYPE GetDriveInfo(long index, IDispatch** drive) override;
    HRESULT STDMETHODCALLTYPE get_OS(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE GetSystemInfo() override;
    HRESULT STDMETHODCALLTYPE get_UsbSupported(long* value) override;
    HRESULT STDMETHODCALLTYPE get_NumUsbPorts(long* value) override;
    HRESULT STDMETHODCALLTYPE get_NumOpenUsbPorts(long* value) override;
    HRESULT STDMETHODCALLTYPE get_HostName(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_DomainName(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_DnsServers(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_NumStaticAdapters(long* value) override;
    HRESULT STDMETHODCALLTYPE get_NumLiveAdapters(long* value) override;
    HRESULT STDMETHODCALLTYPE GetStaticAdapterInfo(long index, IDispatch** adapter) override;
    HRESULT STDMETHODCALLTYPE GetLiveAdapterInfo(long index, IDispatch** adapter) override;
    HRESULT STDMETHODCALLTYPE get_OsMajorNumber(long* value) override;
    HRESULT STDMETHODCALLTYPE get_OsMinorNumber(long* value) override;
    HRESULT STDMETHODCALLTYPE get_OsBuildNumber(long* value) override;

private:
    using Snapshot = std::shared_ptr<const SystemSnapshot>;

    // The snapshot that members answer from; gathers one when there is none.
    Snapshot Known();
    Snapshot Current() const;
    Snapshot Gather() ZELBASE_REQUIRES(gathering_);
    void Renew();
    void OnPostback(unsigned code, unsigned wParam) override;
    HRESULT Fire_OnGeneralSysInfoComplete() const;

    template <typename Figure>
    HRESULT AnswerFigure(Figure SystemSnapshot::*figure, long* value);
    template <typename Figure>
    HRESULT AnswerFigure(Figure SystemSnapshot::*figure, BSTR* text);
    // An object that `create` makes of one of the items. E_INVALIDARG for an index beyond them.
    template <typename Items, typename Create>
    HRESULT AnswerItem(Items SystemSnapshot::*items, Create create, long index, IDispatch** out);

    // Made for the first worker: scripts that only read members need none. Of the object's thread.
    std::optional<PostbackWindow> window_;
    const std::shared_ptr<Completions> completions_;
    // Held while a snapshot is gathered; taken before current_'s lock.
    ZelBase::LocalMutex gathering_;
    mutable ZelBase::LocalMutex mutex_;
    Snapshot current_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace tervane
