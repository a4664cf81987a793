#include "objects/sysinfo/GeneralSysInfo.h"

#include "component/Answers.h"
#include "component/Worker.h"
#include "objects/Classes.h"
#include "objects/sysinfo/DriveInfo.h"
#include "objects/sysinfo/LiveAdapterInfo.h"
#include "objects/sysinfo/StaticAdapterInfo.h"

namespace tervane {
namespace {

using ZelBase::LocalMutexLock;

// Whether the facts were gathered is deliberately told by this text alone: on a machine without one
// they are gathered anew for every member.
bool IsGathered(const SystemSnapshot* snapshot) noexcept {
    return snapshot && !snapshot->cpuVendor.empty();
}

} // namespace

HRESULT GeneralSysInfo::GetSystemInfo() {
    return Guarded([&] {
        if (!window_) {
            window_.emplace(static_cast<PostbackOwner&>(*this));
        }
        WorkerRequest request;
        const auto end = std::make_shared<Completions::End>();
        end->push_back(AddReference(Controlling()));
        request.work = [this, completions = completions_, end] {
            Renew();
            completions->Post(*window_, std::move(*end));
        };
        return StartWorker(std::move(request)) ? S_OK : E_OUTOFMEMORY;
    });
}

// Without memory for them the facts stay as they were; the event tells the end and no outcome.
void GeneralSysInfo::Renew() {
    Guarded([&] {
        const LocalMutexLock lock(gathering_);
        Gather();
        return S_OK;
    });
}

GeneralSysInfo::Snapshot GeneralSysInfo::Known() {
    if (Snapshot current = Current(); IsGathered(current.get())) {
        return current;
    }
    const LocalMutexLock lock(gathering_);
    if (Snapshot current = Current(); IsGathered(current.get())) {
        return current; // the worker was about it
    }
    return Gather();
}

GeneralSysInfo::Snapshot GeneralSysInfo::Current() const {
    const LocalMutexLock lock(mutex_);
    return current_;
}

GeneralSysInfo::Snapshot GeneralSysInfo::Gather() {
    const Snapshot before = Current();
    const auto letters = before ? std::optional(before->driveLetters) : std::nullopt;
    Snapshot gathered = std::make_shared<const SystemSnapshot>(GatherSystemSnapshot(letters));
    const LocalMutexLock lock(mutex_);
    current_ = gathered;
    return gathered;
}

void GeneralSysInfo::OnPostback(unsigned code, unsigned) {
    // Goes at the end, perhaps with the object.
    const ComPtr<IUnknown> object = code == 0 ? completions_->Take() : ComPtr<IUnknown>();
    if (object) {
        Fire_OnGeneralSysInfoComplete();
    }
}

HRESULT GeneralSysInfo::Fire_OnGeneralSysInfoComplete() const {
    return FireEvent(*Sinks(), 1, {});
}

template <typename Figure>
HRESULT GeneralSysInfo::AnswerFigure(Figure SystemSnapshot::*figure, long* value) {
    return AnswerNumber(value, [&] { return (*Known()).*figure; });
}

template <typename Figure>
HRESULT GeneralSysInfo::AnswerFigure(Figure SystemSnapshot::*figure, BSTR* text) {
    return AnswerText(text, [&] { return (*Known()).*figure; });
}

template <typename Items, typename Create>
HRESULT GeneralSysInfo::AnswerItem(Items SystemSnapshot::*items, Create create, long index,
                                   IDispatch** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    return Guarded([&]() -> HRESULT {
        const Snapshot known = Known();
        const Items& all = (*known).*items;
        if (index < 0 || static_cast<std::size_t>(index) >= all.size()) {
            return E_INVALIDARG;
        }
        return create(all[static_cast<std::size_t>(index)], IID_IDispatch,
                      reinterpret_cast<void**>(out));
    });
}

HRESULT GeneralSysInfo::get_CpuSpeed(long* value) {
    return AnswerFigure(&SystemSnapshot::cpuSpeed, value);
}

HRESULT GeneralSysInfo::get_CpuVendor(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::cpuVendor, text);
}

HRESULT GeneralSysInfo::get_CpuDescription(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::cpuDescription, text);
}

HRESULT GeneralSysInfo::get_CpuFamily(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::cpuFamily, text);
}

HRESULT GeneralSysInfo::get_RamSize(long* value) {
    return AnswerFigure(&SystemSnapshot::ramSize, value);
}

HRESULT GeneralSysInfo::get_SystemDriveIndex(long* value) {
    return AnswerFigure(&SystemSnapshot::systemDriveIndex, value);
}

HRESULT GeneralSysInfo::get_SystemDriveTotalSize(long* value) {
    return AnswerFigure(&SystemSnapshot::systemDriveTotalSize, value);
}

HRESULT GeneralSysInfo::get_SystemDriveFreeSpace(long* value) {
    return AnswerFigure(&SystemSnapshot::systemDriveFreeSpace, value);
}

HRESULT GeneralSysInfo::get_LargestFreeDriveIndex(long* value) {
    return AnswerFigure(&SystemSnapshot::largestFreeDriveIndex, value);
}

HRESULT GeneralSysInfo::get_LargestFreeDriveSpace(long* value) {
    return AnswerFigure(&SystemSnapshot::largestFreeDriveSpace, value);
}

HRESULT GeneralSysInfo::get_NumDrives(long* value) {
    return AnswerNumber(value, [&] { return Known()->driveLetters.size(); });
}

HRESULT GeneralSysInfo::GetDriveInfo(long index, IDispatch** drive) {
    const auto create = [](char letter, REFIID iid, void** out) {
        return CreateDriveInfo(ReadDriveFacts(letter), iid, out);
    };
    return AnswerItem(&SystemSnapshot::driveLetters, create, index, drive);
}

HRESULT GeneralSysInfo::get_OS(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::os, text);
}

HRESULT GeneralSysInfo::get_UsbSupported(long* value) {
    return AnswerFigure(&SystemSnapshot::usbSupported, value);
}

HRESULT GeneralSysInfo::get_NumUsbPorts(long* value) {
    return AnswerFigure(&SystemSnapshot::usbPorts, value);
}

HRESULT GeneralSysInfo::get_NumOpenUsbPorts(long* value) {
    return AnswerFigure(&SystemSnapshot::openUsbPorts, value);
}

HRESULT GeneralSysInfo::get_HostName(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::hostName, text);
}

HRESULT GeneralSysInfo::get_DomainName(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::domainName, text);
}

HRESULT GeneralSysInfo::get_DnsServers(BSTR* text) {
    return AnswerFigure(&SystemSnapshot::dnsServers, text);
}

HRESULT GeneralSysInfo::get_NumStaticAdapters(long* value) {
    return AnswerNumber(value, [&] { return Known()->staticAdapters.size(); });
}

HRESULT GeneralSysInfo::get_NumLiveAdapters(long* value) {
    return AnswerNumber(value, [&] { return Known()->liveAdapters.size(); });
}

HRESULT GeneralSysInfo::GetStaticAdapterInfo(long index, IDispatch** adapter) {
    return AnswerItem(&SystemSnapshot::staticAdapters, &CreateStaticAdapterInfo, index, adapter);
}

HRESULT GeneralSysInfo::GetLiveAdapterInfo(long index, IDispatch** adapter) {
    return AnswerItem(&SystemSnapshot::liveAdapters, &CreateLiveAdapterInfo, index, adapter);
}

HRESULT GeneralSysInfo::get_OsMajorNumber(long* value) {
    return AnswerFigure(&SystemSnapshot::osMajorNumber, value);
}

HRESULT GeneralSysInfo::get_OsMinorNumber(long* value) {
    return AnswerFigure(&SystemSnapshot::osMinorNumber, value);
}

HRESULT GeneralSysInfo::get_OsBuildNumber(long* value) {
    return AnswerFigure(&SystemSnapshot::osBuildNumber, value);
}

namespace create {

HRESULT GeneralSysInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::GeneralSysInfo>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
