#pragma once

// Dial-up networking for scripts: entries, devices, connections. It may be used by any thread.
//
// Connect hands the work to a worker with a session of its own, which fires the events itself; the
// object lives until the last session has ended.

#include "ZelBase/threads/LocalMutex.h"
#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "objects/dialup/DialSession.h"
#include "objects/dialup/DialUp.h"

#include <TERVANELib.h>

#include <atomic>
#include <map>
#include <memory>

namespace tervane {

class RASMgr final : public AutomationObject<IRASMgr, EventSource> {
public:
    RASMgr(const ClassRow& row, IUnknown* outer, std::shared_ptr<const DialUp> dialUp = nullptr)
        : Object(row, outer), dialUp_(std::move(dialUp)) {}

    HRESULT STDMETHODCALLTYPE get_Entries(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE DoesEntryExist(BSTR entry, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE FindEntries(BSTR pattern, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE CreateEntry(BSTR entry, BSTR phoneNumber, BSTR deviceName,
                                          VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE RenameEntry(BSTR entry, BSTR newName, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DeleteEntry(BSTR entry, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetEntry(BSTR entry, IDispatch** result) override;
    HRESULT STDMETHODCALLTYPE Connect(BSTR entry, BSTR userName, BSTR password,
                                      long* result) override;
    HRESULT STDMETHODCALLTYPE AbortConnect(long id, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE HangUp(BSTR entry, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_ActiveConnections(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetConnectionState(BSTR entry, long* result) override;
    HRESULT STDMETHODCALLTYPE get_DefaultConnection(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_DefaultConnection(BSTR entry) override;
    HRESULT STDMETHODCALLTYPE FindDevices(BSTR pattern, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetDeviceType(BSTR deviceName, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* result) override;

private:
    using Session = std::shared_ptr<DialSession>;

    HRESULT Fire_OnConnectStateChange(long id, long state, long error) noexcept;
    HRESULT Fire_OnConnectComplete(long id, bool success, long error) noexcept;

    // Keeps the error for the script; true for success.
    bool Note(DWORD error) noexcept;
    // Those of `names` that match; notes an invalid pattern.
    std::vector<std::wstring> Matching(std::vector<std::wstring> names, BSTR pattern);

    long Register(const Session& session);
    bool Unregister(long id);
    bool StartSession(long id, const Session& session);
    void RunSession(long id, DialSession& session);
    bool AbortSessions(const std::wstring& entry);
    DWORD HangUpConnections(const std::wstring& entry);

    LazyDialUp dialUp_;
    std::atomic<DWORD> lastError_ = ERROR_SUCCESS;
    ZelBase::LocalMutex lock_;
    // Those that are still connecting, by their ids.
    std::map<long, Session> sessions_ ZELBASE_GUARDED_BY(lock_);
    long lastId_ ZELBASE_GUARDED_BY(lock_) = 0;
};

} // namespace tervane
