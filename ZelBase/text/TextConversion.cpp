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

// RFC 3629, section 3.
void AppendUtf8(std::string& out, char32_t codePoint) {
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        out += static_cast<char>(0xC0 | (codePoint >> 6));
        out += ContinuationByte(codePoint, 0);
    } else if (codePoint < 0x10000) {
        out += static_cast<char>(0xE0 | (codePoint >> 12));
        out += ContinuationByte(codePoint, 6);
        out += ContinuationByte(codePoint, 0);
    } else {
        out += static_cast<char>(0xF0 | (codePoint >> 18));
        out += ContinuationByte(codePoint, 12);
        out += ContinuationByte(codePoint, 6);
        out += ContinuationByte(codePoint, 0);
    }
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
        AppendUtf8(out, TakeCodePoint(text));
    }
    return out;
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
