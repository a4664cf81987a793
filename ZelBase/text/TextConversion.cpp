#include "ZelBase/text/TextConversion.h"

namespace ZelBase {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Takes the first character off `text`, which is not empty.
char32_t TakeCodePoint(std::wstring_view& text) noexcept {
    const auto unit = static_cast<char16_t>(text[0]);
    const auto next = static_cast<char16_t>(text.size() > 1 ? text[1] : 0);
    if (IsHighSurrogate(unit) && IsLowSurrogate(next)) {
        text.remove_prefix(2);
        return 0x10000 + ((unit - 0xD800u) << 10) + (next - 0xDC00u);
    }
    text.remove_prefix(1);
    return IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit;
}

// A byte after the first of a UTF-8 sequence: six bits of the code point, those from `shift` up.
char ContinuationByte(char32_t codePoint, int shift) noexcept {
    return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
}

constexpr std::size_t kLongestSequence = 4;

std::size_t SequenceSize(char32_t codePoint) noexcept {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

// RFC 3629, section 3. Returns the number of bytes.
std::size_t WriteUtf8(char32_t codePoint, char* out) noexcept {
    constexpr unsigned kLeads[] = {0x00, 0xC0, 0xE0, 0xF0};
    const std::size_t size = SequenceSize(codePoint);
    int shift = 6 * static_cast<int>(size - 1);
    *out++ = static_cast<char>(kLeads[size - 1] | (codePoint >> shift));
    while (shift > 0) {
        shift -= 6;
        *out++ = ContinuationByte(codePoint, shift);
    }
    return size;
}

char ToByte(char32_t codePoint) noexcept {
    if (codePoint >= 0xFF01 && codePoint <= 0xFF5E) {
        return static_cast<char>(codePoint - 0xFF01 + '!');
    }
    return codePoint < 0x100 ? static_cast<char>(codePoint) : '?';
}

} // namespace

std::string Utf16ToUtf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        char bytes[kLongestSequence];
        out.append(bytes, WriteUtf8(TakeCodePoint(text), bytes));
    }
    return out;
}

std::size_t Utf8Size(std::wstring_view text) noexcept {
    std::size_t size = 0;
    while (!text.empty()) {
        size += SequenceSize(TakeCodePoint(text));
    }
    return size;
}

std::size_t TakeUtf8(std::wstring_view& text, char* out, std::size_t room) noexcept {
    std::size_t size = 0;
    while (!text.empty() && size + kLongestSequence <= room) {
        size += WriteUtf8(TakeCodePoint(text), out + size);
    }
    return size;
}

std::string Utf16ToBytes(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        out += ToByte(TakeCodePoint(text));
    }
    return out;
}

} // namespace ZelBase
