#pragma once

#include <cstdint>
#include <string_view>

namespace ZelNet {

// Finds a text in others without keeping it: all that is kept is its length and a sum of its
// characters. A text that happens to have the same sum is found, too.
class TextMark {
public:
    // Finds nothing.
    TextMark() = default;
    explicit TextMark(std::string_view text) noexcept;

    // Takes time linear in the line, whatever was marked.
    bool IsIn(std::string_view line) const noexcept;

private:
    std::size_t length_ = 0;
    std::uint64_t sum_ = 0;
    // What the first of so many characters counts.
    std::uint64_t highest_ = 1;
};

} // namespace ZelNet
