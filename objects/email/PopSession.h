#pragma once

// One connection to a mailbox, from logging in to leaving: each operation drives the POP3 client
// and waits for each of its steps at most as long as the script allows.
//
// One operation runs at a time, on a worker thread. Between operations the connection may end by
// itself; IsLoggedIn then tells so.

#include "ZelBase/text/SecretText.h"
#include "ZelNet/SourceCode/mail/APop3Client.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "objects/email/NotificationQueue.h"

#include <atomic>
#include <memory>
#include <string>

namespace tervane {

struct PopSettings {
    std::string server;
    std::uint32_t port = 0;
    std::string login;
    ZelBase::SecretText password;
};

class PopSession final : private ZelNet::Pop3ClientListener {
public:
    ~PopSession() { Close(); }

    // Makes a new client, after closing the connection of the one before; while no operation runs.
    // False when the system cannot provide one.
    bool Renew();
    // Closes the connection; while no operation runs.
    void Close() noexcept;
    // Ends the operation that runs, and each later one until Renew, with kTerminated. Any thread.
    void Abort();
    bool IsAborted() { return notifications_.IsAborted(); }
    // Any thread.
    bool IsLoggedIn() const { return loggedIn_; }

    // The operations. One that fails otherwise than by the server's refusal closes the connection;
    // so must whoever catches an exception out of one.
    ZelNet::PopStatus Connect(const PopSettings& settings, long timeoutSeconds);
    ZelNet::PopStatus CountMails(long timeoutSeconds, std::uint32_t& count);
    ZelNet::PopStatus Retrieve(int index, long timeoutSeconds, std::string& text);
    ZelNet::PopStatus Delete(int index, long timeoutSeconds);
    // Closes the connection in any case.
    ZelNet::PopStatus Disconnect(long timeoutSeconds);

private:
    using Status = ZelNet::PopStatus;
    using Kind = ZelNet::PopNotification;
    struct Notification {
        Kind kind = Kind::kConnected;
        Status status = Status::kSuccess;
        std::uint32_t count = 0;
        std::string text;
    };

    Status LogIn(const PopSettings& settings, long timeoutSeconds);
    Status Await(Kind kind, long timeoutSeconds, Notification& notification);
    Status Finish(Status status) noexcept;
    void Put(Kind kind, Status status, std::uint32_t count = 0, std::string text = {}) noexcept;

    void Connected(Status status) override;
    void Greeted(Status status) override;
    void LoginStep(bool isPassword, Status status) override;
    void MailCount(Status status, std::uint32_t count, std::uint32_t totalSize) override;
    void Retrieved(Status status, int index, std::string& text) override;
    void Deleted(int index, Status status) override;
    void QuitDone(Status status) override;

    // First, so that the client goes before it.
    const ZelNet::SocketLayerUse sockets_;
    NotificationQueue<Notification> notifications_;
    std::atomic<bool> loggedIn_ = false;
    std::unique_ptr<ZelNet::APop3Client> client_;
};

} // namespace tervane
