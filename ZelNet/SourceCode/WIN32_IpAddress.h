#pragma once

#include "ZelNet/SourceCode/AIpAddress.h"

namespace ZelNet {

// Reads texts as inet_addr does, which knows more forms than the dotted quad.
class WIN32_IpAddress final : public AIpAddress {
public:
    // The unset address.
    WIN32_IpAddress() = default;
    explicit WIN32_IpAddress(const std::string& text);
    explicit WIN32_IpAddress(std::uint32_t value);

    using AIpAddress::SetAddress;
    bool SetAddress(const std::string& text) override;
};

} // namespace ZelNet
