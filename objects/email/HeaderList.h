#pragma once

// The header lines of a message, in order, each as it appears on the wire but for its line end.
// Everything that scripts see as a field of its own (To, Subject, Date...) is a view on this list:
// the first line of that name.
//
// A line is split at its first ": ". One without that has no name and is found by none; nothing is
// checked, trimmed or unfolded. Names are compared without regard to the case of ASCII letters.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

struct HeaderParts {
    std::wstring_view name;
    std::wstring_view value;
};

// Nothing for a line that has no name. The parts point into `line`.
std::optional<HeaderParts> SplitHeader(std::wstring_view line) noexcept;

class HeaderList {
public:
    std::size_t Count() const noexcept { return count_; }
    // Appends the line. Throws std::bad_alloc; the lines there are stay.
    void Add(std::wstring line);
    // Whether `index` was in range.
    bool Remove(std::size_t index);
    void Clear();
    // Null when `index` is out of range.
    const std::wstring* At(std::size_t index) const noexcept;

    // The value of the first line of that name, valid until the list changes.
    std::optional<std::wstring_view> Find(std::wstring_view name) const noexcept;
    // Puts "name: value" in the place of the first line of that name, or appends it. Further lines
    // of that name are left as they are.
    void Set(std::wstring_view name, std::wstring_view value);

private:
    std::optional<std::size_t> IndexOf(std::wstring_view name) const noexcept;

    // The slots, of which the first count_ are in use.
    std::vector<std::wstring> lines_;
    std::size_t count_ = 0;
};

} // namespace tervane
