#include "objects/email/SmtpCtl.h"

#include "ZelBase/text/TextConversion.h"
#include "ZelNet/SourceCode/mail/CommandText.h"
#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/email/EnvelopeAddress.h"
#include "objects/email/MailEvents.h"
#include "objects/email/OutgoingMail.h"
#include "objects/email/StoredText.h"

namespace tervane {

using ZelBase::Utf16ToBytes;
using ZelNet::SmtpStatus;

namespace {

// What the worker is given.
struct Sending {
    SmtpSettings settings;
    OutgoingMail mail;
};

} // namespace

HRESULT SmtpCtl::SendMail(VARIANT_BOOL* result) {
    if (!result) {
        return E_POINTER;
    }
    *result = VARIANT_FALSE;
    return Guarded([&] {
        const SmtpStatus status = StartSending();
        if (status == SmtpStatus::kSuccess) {
            *result = 1; // deliberately not VARIANT_TRUE, as in EmailData
        } else {
            status_ = status;
        }
        return S_OK;
    });
}

// The status is that of the last send or refusal, so success changes nothing yet.
SmtpStatus SmtpCtl::StartSending() {
    if (!worker_.Start()) {
        return SmtpStatus::kInternalError;
    }
    if (worker_.IsBusy()) {
        return SmtpStatus::kWorkInProgress;
    }
    const auto emailData = QueryFor<IEmailData>(emailData_.Get());
    auto mail = emailData ? ReadOutgoingMail(*emailData.Get()) : std::nullopt;
    if (!mail) {
        return SmtpStatus::kInvalidArguments;
    }
    auto sending = std::make_shared<Sending>(Sending{Settings(), std::move(*mail)});
    if (!ZelNet::IsCredential(sending->settings.login) ||
        !ZelNet::IsCredential(sending->settings.password.Text())) {
        return SmtpStatus::kInvalidArguments;
    }
    auto session = std::make_shared<SmtpSession>();
    auto outcome = std::make_shared<SmtpStatus>(SmtpStatus::kInternalError);
    MailTask task;
    task.object = AddReference(Controlling());
    task.work = [this, session, sending = std::move(sending), outcome] {
        *outcome = session->Send(sending->settings, sending->mail);
        Publish(*outcome);
    };
    task.complete = [this, outcome] {
        session_.reset();
        Publish(*outcome); // what was refused meanwhile has left its own
        Fire_OnSmtpSendMailComplete(*Sinks(), success_, static_cast<ISmtpCtl*>(this));
    };
    task.abandon = [this, outcome] { Publish(*outcome); };
    working_ = true;
    // Reading the message may have dispatched a call of this very method.
    if (!worker_.Begin(std::move(task))) {
        return SmtpStatus::kWorkInProgress;
    }
    session_ = std::move(session);
    return SmtpStatus::kSuccess;
}

SmtpSettings SmtpCtl::Settings() const {
    return {Utf16ToBytes(Trimmed(server_, kBlanks)), static_cast<std::uint32_t>(port_),
            Utf16ToBytes(login_), ZelBase::NarrowSecret(password_.Text()), timeoutSeconds_};
}

void SmtpCtl::Publish(SmtpStatus status) noexcept {
    success_ = status == SmtpStatus::kSuccess;
    status_ = status;
    working_ = false;
}

HRESULT SmtpCtl::Abort(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        // A send that has ended, and only waits for its event, is running no more.
        const bool isRunning = session_ && working_;
        if (isRunning) {
            session_->Abort();
        }
        return isRunning;
    });
}

HRESULT SmtpCtl::get_Login(BSTR* value) {
    return AnswerText(value, [&] { return login_; });
}

HRESULT SmtpCtl::put_Login(BSTR value) {
    return StoreText(login_, value);
}

HRESULT SmtpCtl::get_Password(BSTR* value) {
    return AnswerText(value, [&] { return password_.Text(); });
}

HRESULT SmtpCtl::put_Password(BSTR value) {
    return StoreText(password_, value);
}

HRESULT SmtpCtl::get_SmtpServer(BSTR* value) {
    return AnswerText(value, [&] { return server_; });
}

HRESULT SmtpCtl::put_SmtpServer(BSTR value) {
    return StoreText(server_, value);
}

HRESULT SmtpCtl::get_Timeout(long* seconds) {
    return AnswerNumber(seconds, [&] { return timeoutSeconds_; });
}

HRESULT SmtpCtl::put_Timeout(long seconds) {
    timeoutSeconds_ = seconds;
    return S_OK;
}

HRESULT SmtpCtl::get_StatusCode(BSTR* name) {
    return AnswerText(name, [&] { return NameOf(status_); });
}

HRESULT SmtpCtl::get_WorkInProgress(long* value) {
    return AnswerNumber(value, [&] { return working_ ? 1 : 0; });
}

HRESULT SmtpCtl::get_Success(long* value) {
    return AnswerNumber(value, [&] { return success_ ? 1 : 0; });
}

HRESULT SmtpCtl::get_Port(long* port) {
    return AnswerNumber(port, [&] { return port_; });
}

HRESULT SmtpCtl::put_Port(long port) {
    port_ = port;
    return S_OK;
}

HRESULT SmtpCtl::get_EmailData(IDispatch** emailData) {
    if (!emailData) {
        return E_POINTER;
    }
    *emailData = AddReference(emailData_.Get()).Release();
    return S_OK;
}

HRESULT SmtpCtl::put_EmailData(IDispatch* emailData) {
    // The old one's end may call back; it goes when the new one is in place.
    const ComPtr<IDispatch> old = std::exchange(emailData_, AddReference(emailData));
    return S_OK;
}

namespace create {

HRESULT SmtpCtl(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::SmtpCtl>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
