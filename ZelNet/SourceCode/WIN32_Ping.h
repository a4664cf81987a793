#pragma once

#include "ZelNet/SourceCode/APing.h"

namespace ZelNet {

// All objects share the ICMP library and one handle of it: the first loads it, the last to go
// unloads it.
class WIN32_Ping final : public APing {
public:
    WIN32_Ping();
    ~WIN32_Ping() override;

    // Whether the library could not be loaded, for which this object is of no use.
    bool LoadFailed() const { return loadFailed_; }
    int Ping(const IpAddress& address, IpAddress& replyAddress, std::uint32_t& roundTripMs,
             std::uint16_t timeoutMs, std::uint8_t ttl, int dataSize) override;

private:
    bool loadFailed_ = true;
};

} // namespace ZelNet
