#pragma once

// Reads the titles of windows, of any window in the session, without ever being held up by one.
//
// The system keeps the titles of other processes' windows itself and hands them out whatever those
// processes are doing. A window of our own process, however, it asks by a message, and the thread
// that owns the window may be waiting for something - for the very thread that reads, perhaps. Of
// such windows the system's copy is taken, too. (Sending the message with a time limit is no way
// out: a late answer would be written into a buffer that is gone.)

#include <cstddef>
#include <string_view>

#include <windows.h>

namespace tervane {

class WindowTitle {
public:
    // Longer titles are cut off.
    static constexpr size_t kLongest = 499;

    // The title of `window`; empty when it has none or does not exist. Valid until the next Read.
    std::wstring_view Read(HWND window) noexcept;

private:
    size_t ReadWide(HWND window) noexcept;
    size_t ReadNarrow(HWND window) noexcept;

    wchar_t text_[kLongest + 1];
};

} // namespace tervane
