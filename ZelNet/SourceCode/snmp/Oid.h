#pragma once

#include "ZelNet/SourceCode/snmp/AOid.h"
#include "ZelNet/SourceCode/snmp/SnmpAgent.h"

namespace ZelNet {

// Also speaks the form in which the system's agent takes and gives identifiers.
class Oid final : public AOid {
public:
    Oid() = default;
    // Not valid for a text or numbers that are none.
    explicit Oid(std::string_view text) { SetText(text); }
    explicit Oid(const AsnObjectIdentifier& identifier);

    // This identifier with `index` appended: a row of the column that this is.
    Oid Row(std::uint32_t index) const;

    // A copy in memory of the agent, which whoever holds it at last frees with MemFree. False, and
    // nothing stored, when this is not valid or there is no memory.
    bool CopyTo(SnmpAgent& agent, AsnObjectIdentifier& copy) const;
};

} // namespace ZelNet
