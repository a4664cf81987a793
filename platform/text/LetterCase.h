#pragma once

// Lower case by Windows' own table, for all of Unicode: the C runtime's knows only ASCII while a
// program has not chosen a locale, and choosing one is the host's business.

#include <string>
#include <string_view>

namespace tervane {

wchar_t LowerCase(wchar_t letter) noexcept;
std::wstring LowerCase(std::wstring_view text);

} // namespace tervane
