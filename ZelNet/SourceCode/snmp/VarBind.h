#pragma once

// A variable and its value, as an SNMP agent answers it (RFC 1157, section 4.1.1).

#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/snmp/Oid.h"

#include <optional>

namespace ZelNet {

struct VarBind {
    Oid oid;
    // The ASN.1 type of the value.
    std::uint8_t type = ASN_NULL;
    // The value of the numeric types.
    std::int32_t number = 0;
    // The value of the types that are strings of octets; an address has four.
    std::string octets;

    // The value as one of these types; nothing when it is of another.
    std::optional<std::int32_t> Integer() const;
    std::optional<IpAddress> Address() const;
    std::optional<std::string> Octets() const;
};

} // namespace ZelNet
