#pragma once

// Standard output and standard error. A console gets UTF-16 and shows every character; a file or
// pipe gets UTF-8, so that nothing is lost to a code page. Nothing is buffered: what a script
// printed is there even if the process is ended the next moment.

#include <windows.h>

#include <string_view>

namespace tervane::scripthost {

class Console {
public:
    enum class Stream { kOut, kError };

    // Writes the text as it is. A failure code if it could not be written in full; a process
    // without the stream discards it.
    static HRESULT Write(Stream stream, std::wstring_view text);
    // The text and "\r\n".
    static HRESULT WriteLine(Stream stream, std::wstring_view text);
};

} // namespace tervane::scripthost
