#include "platform/SystemError.h"

namespace tervane {

std::wstring SystemErrorText(DWORD error) {
    wchar_t text[512] = {};
    if (error == ERROR_SUCCESS) {
        return {};
    }
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, error, 0, text, sizeof(text) / sizeof(*text), nullptr);
    const std::wstring line(text, length);
    return line.substr(0, line.find_last_not_of(L" \r\n") + 1);
}

} // namespace tervane
