#pragma once

// Finds windows by regular expressions on their titles: one for a top-level window and, optionally,
// one for a window below it. It is always the top-level window that is found; the one below only
// tells it from others of the same title.
//
// Other programs' windows come, move and die while they are being looked at. Therefore windows are
// listed before they are looked at, one level at a time, and no walk goes on for ever.

#include "platform/text/RegularExpression.h"

#include <windows.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace tervane {

// Reads the titles of windows, of any window in the session, without ever being held up by one.
//
// The system keeps the titles of other processes' windows itself and hands them out whatever those
// processes are doing. A window of our own process, however, it asks by a message, and the thread
// that owns the window may be waiting for something - for the very thread that reads, perhaps. Of
// such windows the system's copy is taken, too. (Sending the message with a time limit is no way
// out: a late answer would be written into a buffer that is gone.)
class WindowTitle {
public:
    // Longer titles are cut off.
    static constexpr std::size_t kLongest = 499;

    // The wide function only fails on the 9x family; tests give one that does.
    explicit WindowTitle(decltype(&GetWindowTextW) readWide = GetWindowTextW) noexcept
        : readWide_(readWide) {}

    // The title of `window`; empty when it has none or does not exist. Valid until the next Read.
    std::wstring_view Read(HWND window) noexcept;

private:
    std::size_t ReadNarrow(HWND window) noexcept;

    decltype(&GetWindowTextW) readWide_;
    wchar_t text_[kLongest + 1];
};

class WindowFinder {
public:
    static constexpr LONG kDefaultTimeLimitMs = 35'000'000;
    static constexpr LONG kDefaultCheckIntervalMs = 50;
    static constexpr DWORD kConfirmationIntervalMs = 10;

    // Both patterns are matched as RegularExpression::ContainingMatch says. With an empty
    // `childPattern` the title of the top-level window alone decides.
    WindowFinder(std::wstring_view topLevelPattern, std::wstring_view childPattern);

    // How long the waits below go on; 0 or less means the default.
    void SetTimeLimit(LONG milliseconds) noexcept;
    // How long they pause between looks; 0 or less means the default.
    void SetCheckInterval(LONG milliseconds) noexcept;
    // Whether an invisible window counts as absent in the waits; it does by default.
    void SetVisibleOnly(bool visibleOnly) noexcept { visibleOnly_ = visibleOnly; }

    // Whether both patterns could be compiled. An invalid one matches no window.
    bool IsValid() const noexcept;

    // The constructor and the functions below throw std::bad_alloc. One thread at a time.

    // The first top-level window, in the system's order and visible or not, whose title matches and
    // which is or contains a window that matches the child pattern; null when there is none.
    HWND Find();
    // The first window that matches the child pattern: `window` itself, or one below it, depth
    // first; null when there is none.
    HWND FindBelow(HWND window);

    // Looks until an acceptable window is there: one that is visible, or any if invisible ones
    // count. Null when the time limit runs out, and at once when `abort` (an event) is signalled.
    HWND WaitUntilPresent(HANDLE abort);
    // Looks until no acceptable window has been there for one check interval. False when the time
    // limit runs out, and at once when `abort` is signalled. A look that a costly pattern brought
    // to an early end has not seen that a window is gone.
    bool WaitUntilGone(HANDLE abort);

private:
    bool IsAcceptable(HWND window) const noexcept;
    // Whether a window that Find has not found does not exist, for all that the patterns say.
    bool HasSeenAll() const noexcept;
    bool IsKnownToBeGone();
    bool StaysGone(HANDLE abort);

    RegularExpression topLevel_;
    RegularExpression child_;
    bool hasChildPattern_;
    DWORD timeLimitMs_ = kDefaultTimeLimitMs;
    DWORD checkIntervalMs_ = kDefaultCheckIntervalMs;
    bool visibleOnly_ = true;
    WindowTitle title_;
};

} // namespace tervane
