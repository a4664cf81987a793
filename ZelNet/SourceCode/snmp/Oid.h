#pragma once

#include "ZelNet/SourceCode/snmp/SnmpAgent.h"

#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZelNet {

// An object identifier (RFC 2578, section 3.5): the path of a variable in the tree of management
// information, as numbers and as dotted text such as "1.3.6.1.2.1.2.2.1.1".
class AOid {
public:
    static constexpr std::size_t kMostComponents = 128;

    // Takes the numbers from a dotted text. False, and no identifier, when one of its components
    // is no number of 32 bits or there are too many.
    bool SetText(std::string_view text);
    // Takes the numbers as they are. False, and no identifier, for none or too many.
    bool SetComponents(std::span<const std::uint32_t> components);

    // False when there is no identifier; it is then empty.
    bool IsValid() const { return !components_.empty(); }
    const std::vector<std::uint32_t>& Components() const { return components_; }
    std::string GetText() const;

    // Whether `root` is this variable or one of its ancestors.
    bool IsUnder(const AOid& root) const;
    // What follows `root`, which this is under: in a table's column, the index of the row.
    std::span<const std::uint32_t> Below(const AOid& root) const;

    // The order of a walk: component by component, an ancestor before its descendants.
    auto operator<=>(const AOid& other) const { return components_ <=> other.components_; }
    bool operator==(const AOid& other) const { return components_ == other.components_; }

protected:
    AOid() = default;
    AOid(const AOid&) = default;
    AOid(AOid&&) = default;
    AOid& operator=(const AOid&) = default;
    AOid& operator=(AOid&&) = default;
    ~AOid() = default;

private:
    std::vector<std::uint32_t> components_;
};

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
