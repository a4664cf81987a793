#pragma once

// Ending a connection properly: the system only begins to hang up when it is told to, and a process
// that ends or dials again before it is through leaves the modem in an unknown state.

#include "objects/dialup/DialUp.h"

namespace tervane {

inline constexpr DWORD kLongestHangUp = 10'000; // ms

// Hangs up and returns when the connection is gone: success also when it was gone already,
// ERROR_TIMEOUT when it is still there after that time. The thread must not be in the midst of a
// notification of that connection.
DWORD HangUpAndWait(const DialUp& dialUp, HRASCONN connection, DWORD milliseconds = kLongestHangUp);

} // namespace tervane
