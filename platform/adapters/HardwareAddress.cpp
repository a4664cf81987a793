#include "platform/adapters/HardwareAddress.h"

namespace tervane {
namespace {

constexpr std::size_t kTextLength = 17;
// Two digits and what joins them to the next two.
constexpr std::size_t kTextPerByte = 3;

constexpr int DigitOf(wchar_t letter) noexcept {
    if (letter >= L'0' && letter <= L'9') {
        return letter - L'0';
    }
    if (letter >= L'a' && letter <= L'f') {
        return letter - L'a' + 10;
    }
    return letter >= L'A' && letter <= L'F' ? letter - L'A' + 10 : -1;
}

} // namespace

std::wstring FormatHardwareAddress(std::span<const unsigned char> bytes) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    std::wstring text;
    text.reserve(bytes.size() * kTextPerByte);
    for (const unsigned char byte : bytes) {
        if (!text.empty()) {
            text += L'-';
        }
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

std::optional<HardwareAddressBytes> ParseHardwareAddress(std::wstring_view text) noexcept {
    if (text.size() != kTextLength) {
        return std::nullopt;
    }
    HardwareAddressBytes bytes = {};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int high = DigitOf(text[i * kTextPerByte]);
        const int low = DigitOf(text[i * kTextPerByte + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    return bytes;
}

} // namespace tervane
