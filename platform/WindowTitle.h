#pragma once

// Reads the titles of windows, of any window in the session, without ever being held up by one.
//
// The system keeps the titles of other processes' windows itself and hands them out whatever those
// processes are doing. A window of our own process, however, is asked by a message, and another
// thread of ours may be waiting for something - for the very thread that reads, perhaps. Such a
// thread is given a moment to answer; when it does not, the system's copy has to do.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace tervane {

class WindowTitle {
public:
    // Longer titles are cut off.
    static constexpr size_t kLongest = 499;
    // How long a thread of our own process is waited for, in milliseconds.
    static constexpr UINT kPatience = 200;

    // The title of `window`; empty when it has none or does not exist. Valid until the next Read.
    // One object serves one walk over the windows: it remembers which threads did not answer, so
    // that each is waited for only once.
    std::wstring_view Read(HWND window);

private:
    size_t ReadWide(HWND window);
    size_t ReadByMessage(HWND window, DWORD thread);
    size_t ReadNarrow(HWND window);
    bool IsSilent(DWORD thread) const;

    wchar_t text_[kLongest + 1];
    std::vector<DWORD> silentThreads_;
};

} // namespace tervane
