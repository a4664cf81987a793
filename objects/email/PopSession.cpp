#include "objects/email/PopSession.h"

namespace tervane {

using ZelNet::APop3Client;
using ZelNet::PopStatus;

bool PopSession::Renew() {
    Close();
    notifications_.Clear();
    client_ = APop3Client::Create();
    return client_ != nullptr;
}

void PopSession::Close() noexcept {
    client_.reset();
    loggedIn_ = false; // after the last notification
}

void PopSession::Abort() {
    loggedIn_ = false;
    notifications_.Abort();
}

PopStatus PopSession::Connect(const PopSettings& settings, long timeoutSeconds) {
    const PopStatus status = LogIn(settings, timeoutSeconds);
    if (status == PopStatus::kSuccess) {
        client_->ForgetPassword();
    } else {
        Close();
    }
    return status;
}

PopStatus PopSession::LogIn(const PopSettings& settings, long timeoutSeconds) {
    client_->SetServer(settings.server, settings.port);
    client_->SetLogin(settings.login, settings.password.Text());
    if (!client_->Connect(this)) {
        return client_->GetLastError();
    }
    for (const Kind step :
         {Kind::kConnected, Kind::kGreeted, Kind::kUserStep, Kind::kPasswordStep}) {
        Notification notification;
        const PopStatus status = Await(step, timeoutSeconds, notification);
        if (status != PopStatus::kSuccess) {
            return status;
        }
    }
    return PopStatus::kSuccess;
}

// In the operations below a client that refuses is one whose connection has just been closed; it is
// about to tell so.

PopStatus PopSession::CountMails(long timeoutSeconds, std::uint32_t& count) {
    client_->GetMailCount();
    Notification notification;
    const PopStatus status = Finish(Await(Kind::kMailCount, timeoutSeconds, notification));
    count = notification.count;
    return status;
}

PopStatus PopSession::Retrieve(int index, long timeoutSeconds, std::string& text) {
    client_->RetrieveMessage(index);
    Notification notification;
    const PopStatus status = Finish(Await(Kind::kRetrieved, timeoutSeconds, notification));
    text = std::move(notification.text);
    return status;
}

PopStatus PopSession::Delete(int index, long timeoutSeconds) {
    client_->DeleteMessage(index);
    Notification notification;
    return Finish(Await(Kind::kDeleted, timeoutSeconds, notification));
}

PopStatus PopSession::Disconnect(long timeoutSeconds) {
    client_->Quit();
    Notification notification;
    const PopStatus status = Await(Kind::kQuitDone, timeoutSeconds, notification);
    Close();
    return status;
}

// A failure ends every step, whichever notification brings it.
PopStatus PopSession::Await(Kind kind, long timeoutSeconds, Notification& notification) {
    const StepDeadline deadline(timeoutSeconds);
    for (;;) {
        switch (notifications_.Wait(deadline, notification)) {
        case QueueWait::kAborted:
            return PopStatus::kTerminated;
        case QueueWait::kTimedOut:
            return PopStatus::kTimeout;
        case QueueWait::kNoMemory:
            return PopStatus::kInternalError;
        case QueueWait::kNotified:
            break;
        }
        if (notification.status != PopStatus::kSuccess || notification.kind == kind) {
            return notification.status;
        }
    }
}

PopStatus PopSession::Finish(PopStatus status) noexcept {
    if (status != PopStatus::kSuccess && status != PopStatus::kUnexpected) {
        Close();
    }
    return status;
}

void PopSession::Put(Kind kind, PopStatus status, std::uint32_t count, std::string text) noexcept {
    if (status == PopStatus::kTerminated) {
        loggedIn_ = false;
    }
    notifications_.Put({kind, status, count, std::move(text)});
}

void PopSession::Connected(PopStatus status) {
    Put(Kind::kConnected, status);
}

void PopSession::Greeted(PopStatus status) {
    Put(Kind::kGreeted, status);
}

void PopSession::LoginStep(bool isPassword, PopStatus status) {
    if (isPassword && status == PopStatus::kSuccess) {
        loggedIn_ = true;
    }
    Put(isPassword ? Kind::kPasswordStep : Kind::kUserStep, status);
}

void PopSession::MailCount(PopStatus status, std::uint32_t count, std::uint32_t /*totalSize*/) {
    Put(Kind::kMailCount, status, count);
}

void PopSession::Retrieved(PopStatus status, int /*index*/, std::string& text) {
    Put(Kind::kRetrieved, status, 0, std::move(text));
}

void PopSession::Deleted(int /*index*/, PopStatus status) {
    Put(Kind::kDeleted, status);
}

void PopSession::QuitDone(PopStatus status) {
    Put(Kind::kQuitDone, status);
}

} // namespace tervane
