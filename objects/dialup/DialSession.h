#pragma once

// Making one connection, from dialling until it stands or has failed, on a thread of its own. One
// that fails, or is given up, is hung up before the session ends.

#include "ZelBase/Handles.h"
#include "ZelBase/text/SecretText.h"
#include "objects/dialup/DialUp.h"
#include "objects/dialup/DialWindow.h"

#include <functional>
#include <memory>
#include <string>

namespace tervane {

// Ending a connection properly: the system only begins to hang up when it is told to, and a process
// that ends or dials again before it is through leaves the modem in an unknown state.
inline constexpr DWORD kLongestHangUpMs = 10'000;

// Hangs up and returns when the connection is gone: success also when it was gone already,
// ERROR_TIMEOUT when it is still there after that time. The thread must not be in the midst of a
// notification of that connection.
DWORD HangUpAndWait(const DialUp& dialUp, HRASCONN connection,
                    DWORD milliseconds = kLongestHangUpMs);

class DialSession {
public:
    struct Request {
        std::wstring entry;
        std::wstring userName;            // "" for the one stored with the entry
        ZelBase::WideSecretText password; // the same
    };
    // Is told each state with its error, on the thread that runs the session.
    using Listener = std::function<void(DWORD state, DWORD error)>;

    DialSession(std::shared_ptr<const DialUp> dialUp, Request request)
        : dialUp_(std::move(dialUp)), request_(std::move(request)),
          abort_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    DialSession(const DialSession&) = delete;
    DialSession& operator=(const DialSession&) = delete;

    const std::wstring& Entry() const noexcept { return request_.entry; }

    // Returns 0 when the connection stands, else why it does not: ERROR_USER_DISCONNECTION after
    // Abort, ERROR_NO_CONNECTION when somebody else hung up, ERROR_NOT_ENOUGH_MEMORY also for an
    // exception of the listener. Called once.
    DWORD Run(const Listener& listener);

    // Makes Run end, at once or as soon as it begins. Any thread, any time.
    void Abort() noexcept { SetEvent(abort_.Get()); }

private:
    DWORD Dial(const Listener& listener, HRASCONN& connection);
    DWORD WaitForEnd(DialWindow& window, HANDLE lost, const Listener& listener) const;

    const std::shared_ptr<const DialUp> dialUp_;
    Request request_;
    const ZelBase::UniqueHandle abort_;
};

} // namespace tervane
