#pragma once

namespace ZelNet {

// How a step of sending a mail ended. The client itself reports 0 to 8; the others are for those
// who drive it.
enum class SmtpStatus {
    kSuccess = 0,
    kSocketFailure = 1,
    kConnectError = 2,
    kTerminated = 3, // the connection was closed
    kInvalidArguments = 4,
    kBusy = 5,
    kInvalidState = 6,
    kUnexpected = 7, // the server refused
    kAuthenticationError = 8,
    kTimeout = 9,
    kInternalError = 10,
    kWorkInProgress = 11,
    kAborted = 12,
};

} // namespace ZelNet
