#include "ZelNet/SourceCode/snmp/Oid.h"

#include <algorithm>
#include <charconv>

namespace ZelNet {

bool AOid::SetText(std::string_view text) {
    components_.clear();
    std::vector<std::uint32_t> components;
    const char* next = text.data();
    const char* const end = text.data() + text.size();
    for (;;) {
        std::uint32_t component = 0;
        const auto [after, error] = std::from_chars(next, end, component);
        if (error != std::errc() || components.size() == kMostComponents) {
            return false;
        }
        components.push_back(component);
        if (after == end) {
            break;
        }
        if (*after != '.') {
            return false;
        }
        next = after + 1;
    }
    components_ = std::move(components);
    return true;
}

bool AOid::SetComponents(std::span<const std::uint32_t> components) {
    components_.clear();
    if (components.size() > kMostComponents) {
        return false;
    }
    components_.assign(components.begin(), components.end());
    return IsValid();
}

std::string AOid::GetText() const {
    std::string text;
    for (const std::uint32_t component : components_) {
        text += (text.empty() ? "" : ".") + std::to_string(component);
    }
    return text;
}

bool AOid::IsUnder(const AOid& root) const {
    return components_.size() >= root.components_.size() &&
           std::ranges::equal(root.components_,
                              std::span(components_).first(root.components_.size()));
}

std::span<const std::uint32_t> AOid::Below(const AOid& root) const {
    return IsUnder(root) ? std::span(components_).subspan(root.components_.size())
                         : std::span<const std::uint32_t>();
}

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
