#pragma once

// Formatting of log messages into buffers of fixed size: no allocation, and whatever the format
// asks for, the result is a text that ends within the buffer.

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace ZelBase {

// Size of the buffer that a message is formatted into, with its NUL.
inline constexpr std::size_t kLogTextSize = 512;

// Formats into `text`, cut to its size. A null format gives the empty text.
template <std::size_t Size>
void FormatLogText(char (&text)[Size], const char* format, va_list arguments) noexcept {
    text[0] = 0;
    if (format) {
        _vsnprintf(text, Size, format, arguments); // does not end a text that it cuts
    }
    text[Size - 1] = 0;
}

} // namespace ZelBase
