#include "ZelNet/SourceCode/snmp/VarBind.h"

#include <cstring>

namespace ZelNet {

std::optional<std::int32_t> VarBind::Integer() const {
    return type == ASN_INTEGER ? std::optional(number) : std::nullopt;
}

std::optional<IpAddress> VarBind::Address() const {
    std::uint32_t value = 0;
    if (type != ASN_IPADDRESS || octets.size() != sizeof value) {
        return std::nullopt;
    }
    std::memcpy(&value, octets.data(), sizeof value);
    return IpAddress(value);
}

std::optional<std::string> VarBind::Octets() const {
    return type == ASN_OCTETSTRING ? std::optional(octets) : std::nullopt;
}

} // namespace ZelNet
