#pragma once

// Sends the mail of an EmailData for a script. SendMail returns at once; the work is done on a
// worker thread with what the object and the message said at that time, and its end is told by
// OnSmtpSendMailComplete on the script's thread.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"
#include "component/Control.h"
#include "objects/email/MailWorker.h"
#include "objects/email/SmtpSession.h"

#include <TERVANELib.h>

#include <atomic>
#include <memory>
#include <string>

namespace tervane {

class SmtpCtl final : public AutomationObject<ISmtpCtl, EventSource, Control> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE SendMail(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Abort(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_Login(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Login(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Password(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Password(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_SmtpServer(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_SmtpServer(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Timeout(long* seconds) override;
    HRESULT STDMETHODCALLTYPE put_Timeout(long seconds) override;
    HRESULT STDMETHODCALLTYPE get_StatusCode(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_WorkInProgress(long* value) override;
    HRESULT STDMETHODCALLTYPE get_Success(long* value) override;
    HRESULT STDMETHODCALLTYPE get_Port(long* port) override;
    HRESULT STDMETHODCALLTYPE put_Port(long port) override;
    HRESULT STDMETHODCALLTYPE get_EmailData(IDispatch** emailData) override;
    HRESULT STDMETHODCALLTYPE put_EmailData(IDispatch* emailData) override;

private:
    using Status = ZelNet::SmtpStatus;

    Status StartSending();
    SmtpSettings Settings() const;
    void Publish(Status status) noexcept;

    std::wstring login_;
    ZelBase::WideSecretText password_;
    std::wstring server_;
    long timeoutSeconds_ = 30;
    long port_ = 25;
    ComPtr<IDispatch> emailData_;
    // Written by the worker too.
    std::atomic<Status> status_ = Status::kSuccess;
    std::atomic<bool> success_ = false;
    std::atomic<bool> working_ = false;
    // The running send; null when there is none.
    std::shared_ptr<SmtpSession> session_;
    MailWorker worker_;
};

} // namespace tervane
