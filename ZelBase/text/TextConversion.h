#pragma once

// Conversions of UTF-16 text that do not depend on the system. A wchar_t holds one UTF-16 code
// unit, as it does on Windows. Zero characters are characters like any other.

#include <cstddef>
#include <string>
#include <string_view>

namespace ZelBase {

// Surrogate pairs are combined; a surrogate without its partner becomes U+FFFD.
std::string Utf16ToUtf8(std::wstring_view text);

// The number of bytes of that.
std::size_t Utf8Size(std::wstring_view text) noexcept;
// Takes characters off the front of `text` as long as their bytes fit into `room`, which is at
// least 4, writes these and returns how many there are.
std::size_t TakeUtf8(std::wstring_view& text, char* out, std::size_t room) noexcept;

// For protocols that know nothing but bytes: full-width forms (U+FF01 to U+FF5E) become the ASCII
// characters they are forms of, characters below 256 become their byte, and any other character
// becomes one "?".
std::string Utf16ToBytes(std::wstring_view text);

} // namespace ZelBase
