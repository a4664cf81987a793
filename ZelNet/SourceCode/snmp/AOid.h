#pragma once

// An object identifier (RFC 2578, section 3.5): the path of a variable in the tree of management
// information, as numbers and as dotted text such as "1.3.6.1.2.1.2.2.1.1".

#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZelNet {

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

} // namespace ZelNet
