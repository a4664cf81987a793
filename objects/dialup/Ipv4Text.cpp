#include "objects/dialup/Ipv4Text.h"

#include "platform/text/LetterCase.h"

#include <algorithm>

namespace tervane {
namespace {

// One number without sign and leading zeros, taken off the front of `text`.
std::optional<unsigned char> TakeNumber(std::wstring_view& text) noexcept {
    const std::size_t length = std::min(text.find_first_not_of(L"0123456789"), text.size());
    if (length == 0 || length > 3 || (length > 1 && text.front() == L'0')) {
        return std::nullopt;
    }
    unsigned number = 0;
    for (const wchar_t digit : text.substr(0, length)) {
        number = number * 10 + static_cast<unsigned>(digit - L'0');
    }
    text.remove_prefix(length);
    return number <= 255 ? std::optional(static_cast<unsigned char>(number)) : std::nullopt;
}

} // namespace

std::optional<Ipv4Bytes> ParseIpv4(std::wstring_view text) noexcept {
    Ipv4Bytes bytes = {};
    if (text.empty()) {
        return bytes;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0) {
            if (text.empty() || text.front() != L'.') {
                return std::nullopt;
            }
            text.remove_prefix(1);
        }
        const std::optional<unsigned char> number = TakeNumber(text);
        if (!number) {
            return std::nullopt;
        }
        bytes[i] = *number;
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

std::wstring Ipv4Text(const Ipv4Bytes& bytes) {
    constexpr Ipv4Bytes kNone = {};
    if (bytes == kNone) {
        return {};
    }
    std::wstring text;
    for (const unsigned char byte : bytes) {
        text += (text.empty() ? L"" : L".") + DecimalText(byte);
    }
    return text;
}

} // namespace tervane
