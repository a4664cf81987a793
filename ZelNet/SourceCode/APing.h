#pragma once

// Asks whether a host answers ICMP echo requests (RFC 792), through the system's ICMP library.

#include "ZelNet/SourceCode/IpAddress.h"

#include <memory>
#include <string>

namespace ZelNet {

// What Ping returns instead of a time.
enum PingError {
    kPingHopsExceeded = -4,
    kPingNetworkUnreachable = -5,
    kPingHostUnreachable = -6,
    kPingFailed = -7,
    kPingTimedOut = -8,
};

class APing {
public:
    // Null when the system has no ICMP library, or does not let it be used.
    static std::unique_ptr<APing> Create();

    virtual ~APing() = default;

    // Sends one echo request with `dataSize` bytes (0 to 1400, else 20) that may pass `ttl` routers
    // and waits for the answer. Returns the round-trip time in milliseconds or a PingError. In
    // either case the reply's address and round-trip time are stored, as far as there are any.
    virtual int Ping(const IpAddress& address, IpAddress& replyAddress, std::uint32_t& roundTripMs,
                     std::uint16_t timeoutMs, std::uint8_t ttl, int dataSize) = 0;

    // The data of a request of that size.
    static std::string RequestData(int dataSize);
    // What Ping returns for a reply with that status (the ICMP library's IP status codes).
    static int Result(std::uint32_t status, std::uint32_t replies, std::uint32_t roundTripMs);

protected:
    APing() = default;
    APing(const APing&) = delete;
    APing& operator=(const APing&) = delete;
};

} // namespace ZelNet
