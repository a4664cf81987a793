#include "ZelNet/SourceCode/sockets/GenericError.h"

#include <algorithm>
#include <iterator>

namespace ZelNet {
namespace {

struct Row {
    int winsockError;
    GenericError generic;
};

// The numbers instead of the WSA names, so that this file needs no Windows header.
constexpr Row kTable[] = {
    {0, kNoError},
    {10093, kNotInitialised},   // WSANOTINITIALISED
    {10024, kNetworkFailure},   // WSAEMFILE
    {10038, kNetworkFailure},   // WSAENOTSOCK
    {10047, kNetworkFailure},   // WSAEAFNOSUPPORT
    {10050, kNetworkFailure},   // WSAENETDOWN
    {10052, kNetworkFailure},   // WSAENETRESET
    {10055, kNetworkFailure},   // WSAENOBUFS
    {10048, kAddressInUse},     // WSAEADDRINUSE
    {10022, kInvalidOperation}, // WSAEINVAL
    {10036, kInvalidOperation}, // WSAEINPROGRESS
    {10058, kInvalidOperation}, // WSAESHUTDOWN
    {10039, kProtocolMismatch}, // WSAEDESTADDRREQ
    {10041, kProtocolMismatch}, // WSAEPROTOTYPE
    {10043, kProtocolMismatch}, // WSAEPROTONOSUPPORT
    {10049, kUnreachable},      // WSAEADDRNOTAVAIL
    {10051, kUnreachable},      // WSAENETUNREACH
    {10053, kConnectionLost},   // WSAECONNABORTED
    {10054, kConnectionLost},   // WSAECONNRESET
    {10035, kWouldBlock},       // WSAEWOULDBLOCK
    {10040, kMessageTooLong},   // WSAEMSGSIZE
};

} // namespace

GenericError GenericErrorOf(int winsockError) {
    const auto* row = std::find_if(std::begin(kTable), std::end(kTable), [&](const Row& candidate) {
        return candidate.winsockError == winsockError;
    });
    return row == std::end(kTable) ? kOtherError : row->generic;
}

} // namespace ZelNet
