#pragma once

// Lower case by Windows' own table, for all of Unicode: the C runtime's knows only ASCII while a
// program has not chosen a locale, and choosing one is the host's business.

#include <algorithm>
#include <string>
#include <string_view>

namespace tervane {

// Names that Windows and its programs spell in ASCII and compare without regard to case.
constexpr wchar_t LowerAscii(wchar_t letter) noexcept {
    return letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter + (L'a' - L'A')) : letter;
}

inline std::wstring LowerAscii(std::wstring_view text) {
    std::wstring lower(text);
    for (wchar_t& letter : lower) {
        letter = LowerAscii(letter);
    }
    return lower;
}

// The number in decimal digits, without the run-time library's wide formatting, which is large.
template <typename Number>
std::wstring DecimalText(Number number) {
    const std::string text = std::to_string(number);
    return std::wstring(text.begin(), text.end());
}

// The number in hexadecimal digits, with zeros in front of it up to that many.
inline std::wstring HexText(unsigned long number, std::size_t digits = 1) {
    std::wstring text;
    for (; number != 0 || text.size() < digits; number /= 16) {
        text.insert(text.begin(), L"0123456789abcdef"[number % 16]);
    }
    return text;
}

constexpr bool SameAscii(wchar_t one, wchar_t other) noexcept {
    return LowerAscii(one) == LowerAscii(other);
}

constexpr bool EqualsIgnoringAsciiCase(std::wstring_view one, std::wstring_view other) noexcept {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), SameAscii);
}

constexpr bool StartsIgnoringAsciiCase(std::wstring_view text, std::wstring_view start) noexcept {
    return EqualsIgnoringAsciiCase(text.substr(0, start.size()), start);
}

constexpr bool EndsIgnoringAsciiCase(std::wstring_view text, std::wstring_view end) noexcept {
    return text.size() >= end.size() &&
           EqualsIgnoringAsciiCase(text.substr(text.size() - end.size()), end);
}

// npos when it does not occur.
constexpr std::size_t FindIgnoringAsciiCase(std::wstring_view text,
                                            std::wstring_view part) noexcept {
    const auto found = std::search(text.begin(), text.end(), part.begin(), part.end(), SameAscii);
    return found == text.end() && !part.empty() ? std::wstring_view::npos
                                                : static_cast<std::size_t>(found - text.begin());
}

wchar_t LowerCase(wchar_t letter) noexcept;
std::wstring LowerCase(std::wstring_view text);

} // namespace tervane
