#pragma once

// Reads a mailbox for a script. Each method starts one operation and returns at once; the work is
// done on a worker thread, and its end is told by an event on the script's thread.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"
#include "objects/email/MailWorker.h"
#include "objects/email/PopSession.h"

#include <TERVANELib.h>

#include <memory>
#include <string>

namespace tervane {

class PopCtl final : public AutomationObject<IPopCtl, EventSource, Control> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE get_PopServer(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_PopServer(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Port(long* port) override;
    HRESULT STDMETHODCALLTYPE put_Port(long port) override;
    HRESULT STDMETHODCALLTYPE get_Login(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Login(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Password(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Password(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Timeout(long* seconds) override;
    HRESULT STDMETHODCALLTYPE put_Timeout(long seconds) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_Connected(long* value) override;
    HRESULT STDMETHODCALLTYPE get_CurrentMessageIndex(long* index) override;
    HRESULT STDMETHODCALLTYPE get_EmailData(IDispatch** emailData) override;
    HRESULT STDMETHODCALLTYPE Connect(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetMailCount(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE RetrieveMessage(long index, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DeleteMessage(long index, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Disconnect(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE AbortCurrentAction(VARIANT_BOOL* result) override;

private:
    using Status = ZelNet::PopStatus;
    // What an operation finds out.
    struct Outcome {
        Status status = Status::kInternalError;
        std::uint32_t count = 0;
        std::string text;
    };
    using Work = std::function<void(PopSession& session, Outcome& outcome)>;
    // Tells the script; the outcome's status has become LastError.
    using Report = std::function<void(Outcome& outcome)>;

    HRESULT Answer(VARIANT_BOOL* result, const std::function<Status()>& start) noexcept;
    Status StartConnecting();
    Status StartOperation(Work work, Report report);
    Status Begin(Work work, Report report);
    void Complete(Outcome& outcome, const Report& report);
    void KeepMessage(Outcome& outcome, long index);
    Status AbortNow();
    IDispatch* Self() { return static_cast<IPopCtl*>(this); }

    std::wstring server_;
    long port_ = 110;
    std::wstring login_;
    ZelBase::WideSecretText password_;
    long timeoutSeconds_ = 30;
    Status lastError_ = Status::kSuccess;
    long currentMessageIndex_ = 0;
    ComPtr<IEmailData> emailData_;
    // Null until the first Connect. The worker holds it too while an operation runs.
    std::shared_ptr<PopSession> session_;
    MailWorker worker_;
};

} // namespace tervane
