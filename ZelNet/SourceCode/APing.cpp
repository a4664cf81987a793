#include "ZelNet/SourceCode/APing.h"

namespace ZelNet {
namespace {

constexpr int kLargestData = 1400;
constexpr int kDefaultData = 20;

} // namespace

std::string APing::RequestData(int dataSize) {
    const bool inRange = dataSize >= 0 && dataSize <= kLargestData;
    std::string data(static_cast<std::size_t>(inRange ? dataSize : kDefaultData), ' ');
    char next = '0';
    for (char& byte : data) {
        byte = next;
        next = static_cast<char>(next == '}' ? ' ' : next + 1);
    }
    return data;
}

int APing::Result(std::uint32_t status, std::uint32_t replies, std::uint32_t roundTripMs) {
    switch (status) {
    case 0: // success
        return replies == 0 ? kPingHostUnreachable : static_cast<int>(roundTripMs);
    case 11002: // destination network unreachable
    case 11012: // bad route
        return kPingNetworkUnreachable;
    case 11003: // destination host unreachable
    case 11004: // destination protocol unreachable
    case 11005: // destination port unreachable
    case 11018: // bad destination
        return kPingHostUnreachable;
    case 11010: // request timed out
        return kPingTimedOut;
    case 11013: // time to live expired in transit
        return kPingHopsExceeded;
    default:
        return kPingFailed;
    }
}

} // namespace ZelNet
