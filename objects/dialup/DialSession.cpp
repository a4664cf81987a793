#include "objects/dialup/DialSession.h"

#include <raserror.h>

#include <iterator>

namespace tervane {
namespace {

// The system's own way of telling that the handle is free is that it is no longer valid; there is
// no event for that.
constexpr DWORD kIntervalMs = 50;

bool IsGone(DWORD error) noexcept {
    return error == ERROR_INVALID_HANDLE || error == ERROR_NO_CONNECTION;
}

} // namespace

DWORD HangUpAndWait(const DialUp& dialUp, HRASCONN connection, DWORD milliseconds) {
    const DWORD error = dialUp.StartHangUp(connection);
    if (error != ERROR_SUCCESS) {
        return IsGone(error) ? static_cast<DWORD>(ERROR_SUCCESS) : error;
    }
    for (DWORD waited = 0; waited <= milliseconds; waited += kIntervalMs) {
        DWORD state = 0;
        if (IsGone(dialUp.State(connection, state))) {
            return ERROR_SUCCESS;
        }
        Sleep(kIntervalMs);
    }
    return ERROR_TIMEOUT;
}

DWORD DialSession::Run(const Listener& listener) {
    HRASCONN connection = nullptr;
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    try {
        error = Dial(listener, connection);
    } catch (...) {
        // Whoever waits for the end must hear of it, and the connection must go.
    }
    if (error != ERROR_SUCCESS && connection) {
        HangUpAndWait(*dialUp_, connection);
    }
    return error;
}

DWORD DialSession::Dial(const Listener& listener, HRASCONN& connection) {
    if (WaitForSingleObject(abort_.Get(), 0) == WAIT_OBJECT_0) {
        return ERROR_USER_DISCONNECTION;
    }
    DialWindow window;
    const ZelBase::UniqueHandle lost(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!window.Handle() || !lost) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    const DWORD error = dialUp_->Dial(request_.entry, request_.userName, request_.password,
                                      window.Handle(), connection);
    request_.password.Clear();
    if (error != ERROR_SUCCESS) {
        return error;
    }
    // Where the system cannot tell the end it is noticed by the states alone.
    dialUp_->NotifyOfEnd(connection, lost.Get());
    return WaitForEnd(window, lost.Get(), listener);
}

DWORD DialSession::WaitForEnd(DialWindow& window, HANDLE lost, const Listener& listener) const {
    const HANDLE ends[] = {abort_.Get(), lost};
    for (;;) {
        const DWORD awakened = MsgWaitForMultipleObjects(static_cast<DWORD>(std::size(ends)), ends,
                                                         FALSE, INFINITE, QS_ALLINPUT);
        if (awakened == WAIT_OBJECT_0) {
            return ERROR_USER_DISCONNECTION;
        }
        // What has arrived comes first: it may say why the connection was lost.
        while (const std::optional<DialWindow::Progress> progress = window.Take()) {
            listener(progress->state, progress->error);
            if (progress->error != ERROR_SUCCESS || progress->state == RASCS_Connected) {
                return progress->error;
            }
            if (progress->state == RASCS_Disconnected) {
                return ERROR_NO_CONNECTION;
            }
        }
        if (awakened == WAIT_OBJECT_0 + 1 || awakened == WAIT_FAILED) {
            return ERROR_NO_CONNECTION;
        }
    }
}

} // namespace tervane
