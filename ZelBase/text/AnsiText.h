#pragma once

// Conversions between wide text and the machine's ANSI code page, in which older interfaces of the
// system talk. Zero characters are characters like any other.

#include <string>
#include <string_view>

namespace ZelBase {

// Characters that the code page lacks become its default character, usually "?".
std::string WideToAnsi(std::wstring_view text);

std::wstring AnsiToWide(std::string_view text);

} // namespace ZelBase
