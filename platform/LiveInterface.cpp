#include "platform/LiveInterface.h"

namespace tervane {

std::wstring HardwareAddressText(std::string_view bytes) {
    constexpr std::size_t kLength = 6;
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    if (bytes.size() != kLength) {
        return LiveAdapter().hardwareAddress;
    }
    std::wstring text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += text.empty() ? L"" : L"-";
        text += {kDigits[value >> 4], kDigits[value & 15]};
    }
    return text;
}

} // namespace tervane
