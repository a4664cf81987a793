#include "ZelNet/SourceCode/mail/TextMark.h"

namespace ZelNet {
namespace {

// The characters are the digits of a number to this base, modulo 2 to the power of 64.
constexpr std::uint64_t kBase = 0x9E3779B97F4A7C15;

std::uint64_t Add(std::uint64_t sum, char character) noexcept {
    return sum * kBase + static_cast<unsigned char>(character) + 1;
}

} // namespace

TextMark::TextMark(std::string_view text) noexcept : length_(text.size()) {
    for (std::size_t i = 0; i < length_; ++i) {
        sum_ = Add(sum_, text[i]);
        highest_ = i == 0 ? 1 : highest_ * kBase;
    }
}

bool TextMark::IsIn(std::string_view line) const noexcept {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; length_ != 0 && i < line.size(); ++i) {
        if (i >= length_) {
            sum -= (static_cast<unsigned char>(line[i - length_]) + 1) * highest_;
        }
        sum = Add(sum, line[i]);
        if (i + 1 >= length_ && sum == sum_) {
            return true;
        }
    }
    return false;
}

} // namespace ZelNet
