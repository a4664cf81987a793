#include "objects/dialup/HangUp.h"

#include <raserror.h>

namespace tervane {
namespace {

// The system's own way of telling that the handle is free is that it is no longer valid; there is
// no event for that.
constexpr DWORD kInterval = 50; // ms

bool IsGone(DWORD error) noexcept {
    return error == ERROR_INVALID_HANDLE || error == ERROR_NO_CONNECTION;
}

} // namespace

DWORD HangUpAndWait(const DialUp& dialUp, HRASCONN connection, DWORD milliseconds) {
    const DWORD error = dialUp.StartHangUp(connection);
    if (error != ERROR_SUCCESS) {
        return IsGone(error) ? static_cast<DWORD>(ERROR_SUCCESS) : error;
    }
    for (DWORD waited = 0; waited <= milliseconds; waited += kInterval) {
        DWORD state = 0;
        if (IsGone(dialUp.State(connection, state))) {
            return ERROR_SUCCESS;
        }
        Sleep(kInterval);
    }
    return ERROR_TIMEOUT;
}

} // namespace tervane
