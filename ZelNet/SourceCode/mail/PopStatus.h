#pragma once

namespace ZelNet {

// How a step of reading a mailbox ended. The client itself reports 0 to 8; the others are for those
// who drive it.
enum class PopStatus {
    kSuccess = 0,
    kSocketFailure = 1,
    kAuthenticationError = 2,
    kConnectError = 3,
    kTerminated = 4, // the connection was closed
    kInvalidArguments = 5,
    kBusy = 6,
    kInvalidState = 7,
    kUnexpected = 8, // the server refused
    kInternalError = 9,
    kWorkInProgress = 10,
    kAlreadyConnected = 11,
    kNotYetConnected = 12,
    kTimeout = 13,
};

} // namespace ZelNet
