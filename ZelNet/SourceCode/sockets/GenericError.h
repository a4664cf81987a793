#pragma once

// Listeners are told errors as a handful of generic codes instead of Winsock's, so that code above
// the sockets does not depend on the platform's numbers. The names describe the group of Winsock
// codes that a generic code stands for.

namespace ZelNet {

enum GenericError {
    kNoError = 0,
    // Everything that has no code of its own; refused (10061) and timed out (10060) connections
    // too, which is kept because users of the codes rely on it.
    kOtherError = 1,
    kNotInitialised = 2,
    kNetworkFailure = 3,
    kAddressInUse = 4,
    kInvalidOperation = 5,
    kProtocolMismatch = 6,
    kUnreachable = 8,
    kConnectionLost = 9,
    kWouldBlock = 10,
    kMessageTooLong = 11,
};

// The generic code of a Winsock error code; every code not in the table is kOtherError.
GenericError GenericErrorOf(int winsockError);

} // namespace ZelNet
