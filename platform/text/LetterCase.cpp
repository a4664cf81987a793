#include "platform/text/LetterCase.h"

#include <windows.h>

namespace tervane {

wchar_t LowerCase(wchar_t letter) noexcept {
    CharLowerBuffW(&letter, 1);
    return letter;
}

std::wstring LowerCase(std::wstring_view text) {
    std::wstring lower(text);
    CharLowerBuffW(lower.data(), static_cast<DWORD>(lower.size()));
    return lower;
}

} // namespace tervane
