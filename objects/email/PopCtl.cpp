#include "objects/email/PopCtl.h"

#include "ZelBase/text/TextConversion.h"
#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/email/EnvelopeAddress.h"
#include "objects/email/MailEvents.h"
#include "objects/email/ReceivedMail.h"
#include "objects/email/StoredText.h"

namespace tervane {

using ZelBase::Utf16ToBytes;
using ZelNet::PopStatus;

// Runs the start of an operation for the method that asks for it.
HRESULT PopCtl::Answer(VARIANT_BOOL* result, const std::function<PopStatus()>& start) noexcept {
    return AnswerFlag(result, [&] {
        const PopStatus status = start();
        if (status != PopStatus::kSuccess) {
            lastError_ = status;
        }
        return status == PopStatus::kSuccess;
    });
}

HRESULT PopCtl::Connect(VARIANT_BOOL* result) {
    return Answer(result, [&] { return StartConnecting(); });
}

PopStatus PopCtl::StartConnecting() {
    if (!worker_.Start()) {
        return PopStatus::kInternalError;
    }
    if (session_ && session_->IsLoggedIn()) {
        return PopStatus::kAlreadyConnected;
    }
    if (worker_.IsBusy()) {
        return PopStatus::kWorkInProgress; // and still uses the client there is
    }
    if (!session_) {
        session_ = std::make_shared<PopSession>();
    }
    worker_.CloseWhenLeft([left = std::weak_ptr(session_)] {
        if (const auto session = left.lock()) {
            session->Close();
        }
    });
    if (!session_->Renew()) {
        return PopStatus::kInternalError;
    }
    PopSettings settings = {Utf16ToBytes(Trimmed(server_, kBlanks)),
                            static_cast<std::uint32_t>(port_), Utf16ToBytes(login_),
                            ZelBase::NarrowSecret(password_.Text())};
    return Begin([settings = std::move(settings), timeout = timeoutSeconds_](
                     PopSession& session,
                     Outcome& outcome) { outcome.status = session.Connect(settings, timeout); },
                 [this](Outcome& outcome) {
                     Fire_OnPopConnect(*Sinks(), outcome.status == PopStatus::kSuccess, Self());
                 });
}

HRESULT PopCtl::GetMailCount(VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return StartOperation(
            [timeout = timeoutSeconds_](PopSession& session, Outcome& outcome) {
                outcome.status = session.CountMails(timeout, outcome.count);
            },
            [this](Outcome& outcome) {
                Fire_OnPopGetMailCount(*Sinks(), static_cast<LONG>(outcome.count), Self());
            });
    });
}

HRESULT PopCtl::RetrieveMessage(long index, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return StartOperation(
            [index, timeout = timeoutSeconds_](PopSession& session, Outcome& outcome) {
                outcome.status = session.Retrieve(index, timeout, outcome.text);
            },
            [this, index](Outcome& outcome) {
                KeepMessage(outcome, index);
                Fire_OnPopRetrieveMessage(*Sinks(), outcome.status == PopStatus::kSuccess, Self());
            });
    });
}

HRESULT PopCtl::DeleteMessage(long index, VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return StartOperation(
            [index, timeout = timeoutSeconds_](PopSession& session, Outcome& outcome) {
                outcome.status = session.Delete(index, timeout);
            },
            [this, index](Outcome& outcome) {
                Fire_OnPopDeleteMessage(*Sinks(), outcome.status == PopStatus::kSuccess, index,
                                        Self());
            });
    });
}

HRESULT PopCtl::Disconnect(VARIANT_BOOL* result) {
    return Answer(result, [&] {
        return StartOperation(
            [timeout = timeoutSeconds_](PopSession& session, Outcome& outcome) {
                outcome.status = session.Disconnect(timeout);
            },
            [this](Outcome& outcome) {
                Fire_OnPopDisconnect(*Sinks(), outcome.status == PopStatus::kSuccess, Self());
            });
    });
}

PopStatus PopCtl::StartOperation(Work work, Report report) {
    if (!session_ || !session_->IsLoggedIn()) {
        return PopStatus::kNotYetConnected;
    }
    return Begin(std::move(work), std::move(report));
}

PopStatus PopCtl::Begin(Work work, Report report) {
    auto outcome = std::make_shared<Outcome>();
    MailTask task;
    task.object = AddReference(Controlling());
    task.work = [session = session_, work = std::move(work), outcome] {
        try {
            work(*session, *outcome);
        } catch (...) {
            session->Close(); // it is not known what the client still waits for
            throw;
        }
    };
    task.complete = [this, report = std::move(report), outcome] { Complete(*outcome, report); };
    task.abandon = [session = session_] { session->Close(); };
    return worker_.Begin(std::move(task)) ? PopStatus::kSuccess : PopStatus::kWorkInProgress;
}

// An operation that was aborted in its last moment is an aborted one all the same.
void PopCtl::Complete(Outcome& outcome, const Report& report) {
    if (session_->IsAborted()) {
        session_->Close();
        outcome = Outcome();
        outcome.status = PopStatus::kTerminated;
    }
    lastError_ = outcome.status;
    report(outcome);
}

void PopCtl::KeepMessage(Outcome& outcome, long index) {
    if (outcome.status != PopStatus::kSuccess) {
        return;
    }
    ComPtr<IEmailData> emailData;
    Guarded([&] {
        emailData = MakeReceivedMail(std::move(outcome.text));
        return S_OK;
    });
    if (emailData) {
        emailData_ = std::move(emailData);
        currentMessageIndex_ = index;
    } else {
        lastError_ = outcome.status = PopStatus::kInternalError;
    }
}

HRESULT PopCtl::AbortCurrentAction(VARIANT_BOOL* result) {
    return Answer(result, [&] { return AbortNow(); });
}

// A running operation ends by itself and reports what became of it.
PopStatus PopCtl::AbortNow() {
    if (session_ && worker_.IsBusy()) {
        session_->Abort();
        return PopStatus::kSuccess;
    }
    if (!session_ || !session_->IsLoggedIn()) {
        return PopStatus::kNotYetConnected;
    }
    session_->Close();
    lastError_ = PopStatus::kTerminated;
    return PopStatus::kSuccess;
}

HRESULT PopCtl::get_PopServer(BSTR* value) {
    return AnswerText(value, [&] { return server_; });
}

HRESULT PopCtl::put_PopServer(BSTR value) {
    return StoreText(server_, value);
}

HRESULT PopCtl::get_Port(long* port) {
    return AnswerNumber(port, [&] { return port_; });
}

HRESULT PopCtl::put_Port(long port) {
    port_ = port;
    return S_OK;
}

HRESULT PopCtl::get_Login(BSTR* value) {
    return AnswerText(value, [&] { return login_; });
}

HRESULT PopCtl::put_Login(BSTR value) {
    return StoreText(login_, value);
}

HRESULT PopCtl::get_Password(BSTR* value) {
    return AnswerText(value, [&] { return password_.Text(); });
}

HRESULT PopCtl::put_Password(BSTR value) {
    return StoreText(password_, value);
}

HRESULT PopCtl::get_Timeout(long* seconds) {
    return AnswerNumber(seconds, [&] { return timeoutSeconds_; });
}

HRESULT PopCtl::put_Timeout(long seconds) {
    timeoutSeconds_ = seconds;
    return S_OK;
}

// Unlike the other members this one calls neither a null pointer nor an unknown status an error.
HRESULT PopCtl::get_LastError(BSTR* name) {
    if (!name) {
        return S_FALSE;
    }
    const auto known = NameOf(lastError_);
    const HRESULT returned = ReturnText(known.value_or(kUnknownPopStatus), name);
    return returned == S_OK && !known ? S_FALSE : returned;
}

HRESULT PopCtl::get_Connected(long* value) {
    return AnswerNumber(value, [&] { return session_ && session_->IsLoggedIn() ? 1 : 0; });
}

HRESULT PopCtl::get_CurrentMessageIndex(long* index) {
    return AnswerNumber(index, [&] { return currentMessageIndex_; });
}

HRESULT PopCtl::get_EmailData(IDispatch** emailData) {
    if (!emailData) {
        return E_POINTER;
    }
    *emailData = AddReference<IDispatch>(emailData_.Get()).Release();
    return S_OK;
}

namespace create {

HRESULT PopCtl(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::PopCtl>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
