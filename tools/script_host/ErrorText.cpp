#include "tools/script_host/ErrorText.h"

#include <cwchar>

namespace tervane::scripthost {

std::wstring ErrorText(HRESULT code) {
    wchar_t text[512];
    DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       static_cast<DWORD>(code), 0, text, ARRAYSIZE(text), nullptr);
    while (length != 0 && text[length - 1] <= L' ') {
        --length;
    }
    if (length == 0) {
        length = static_cast<DWORD>(
            swprintf(text, ARRAYSIZE(text), L"Error 0x%08lX", static_cast<ULONG>(code)));
    }
    return std::wstring(text, length);
}

} // namespace tervane::scripthost
