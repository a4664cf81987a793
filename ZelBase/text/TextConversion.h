#pragma once

// Conversions of UTF-16 text that do not depend on the system. A wchar_t holds one UTF-16 code
// unit, as it does on Windows. Zero characters are characters like any other.

#include <string>
#include <string_view>

namespace ZelBase {

// Surrogate pairs are combined; a surrogate without its partner becomes U+FFFD.
std::string Utf16ToUtf8(std::wstring_view text);

// For protocols that know nothing but bytes: full-width forms (U+FF01 to U+FF5E) become the ASCII
// characters they are forms of, characters below 256 become their byte, and any other character
// becomes one "?".
std::string Utf16ToBytes(std::wstring_view text);

} // namespace ZelBase
