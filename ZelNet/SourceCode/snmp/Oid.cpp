#include "ZelNet/SourceCode/snmp/Oid.h"

#include <algorithm>

namespace ZelNet {

static_assert(sizeof(UINT) == sizeof(std::uint32_t));

Oid::Oid(const AsnObjectIdentifier& identifier) {
    if (identifier.ids && identifier.idLength <= kMostComponents) {
        SetComponents(
            std::vector<std::uint32_t>(identifier.ids, identifier.ids + identifier.idLength));
    }
}

Oid Oid::Row(std::uint32_t index) const {
    std::vector<std::uint32_t> components = Components();
    components.push_back(index);
    Oid row;
    row.SetComponents(components);
    return row;
}

bool Oid::CopyTo(SnmpAgent& agent, AsnObjectIdentifier& copy) const {
    if (!IsValid()) {
        return false;
    }
    const auto count = static_cast<UINT>(Components().size());
    auto* ids = static_cast<UINT*>(agent.MemAlloc(count * sizeof(UINT)));
    if (!ids) {
        return false;
    }
    std::ranges::copy(Components(), ids);
    copy.idLength = count;
    copy.ids = ids;
    return true;
}

} // namespace ZelNet
