#include "objects/config/windows/WindowFinder.h"

#include <algorithm>
#include <new>

namespace tervane {

namespace {

// Answered without asking the window's process, nor the system for most windows: procedures of
// other programs' windows are told to nobody. By the narrow function, which the 9x family has, too.
bool MayBeOurs(HWND window) noexcept {
    return GetWindowLongPtrA(window, GWLP_WNDPROC) != 0;
}

bool IsOfAnotherThreadOfOurs(HWND window) noexcept {
    DWORD process = 0;
    return GetWindowThreadProcessId(window, &process) != GetCurrentThreadId() &&
           process == GetCurrentProcessId();
}

} // namespace

std::wstring_view WindowTitle::Read(HWND window) noexcept {
    if (MayBeOurs(window) && IsOfAnotherThreadOfOurs(window)) {
        const int length = InternalGetWindowText(window, text_, kLongest + 1);
        return {text_, static_cast<std::size_t>(length)};
    }
    SetLastError(ERROR_SUCCESS);
    const auto length = static_cast<std::size_t>(readWide_(window, text_, kLongest + 1));
    const bool isMissing = length == 0 && GetLastError() == ERROR_CALL_NOT_IMPLEMENTED;
    return {text_, isMissing ? ReadNarrow(window) : length};
}

// Systems of the 9x family have no wide titles.
std::size_t WindowTitle::ReadNarrow(HWND window) noexcept {
    char narrow[kLongest + 1];
    const int length = GetWindowTextA(window, narrow, sizeof narrow);
    // Of a window that has just died, some systems hand out what happened to lie in the memory.
    if (length <= 0 || !IsWindow(window)) {
        return 0;
    }
    return static_cast<std::size_t>(
        MultiByteToWideChar(CP_ACP, 0, narrow, length, text_, static_cast<int>(kLongest)));
}

namespace {

// A session has no more windows than this. A walk that meets more of them is being led round in a
// circle by windows that change places.
constexpr std::size_t kMostWindows = 0x10000;

struct WindowList {
    std::vector<HWND> windows;
    bool memoryExhausted = false;
};

// No exception may pass through the system's enumeration.
BOOL CALLBACK AddToList(HWND window, LPARAM parameter) noexcept {
    auto* list = reinterpret_cast<WindowList*>(parameter);
    try {
        list->windows.push_back(window);
        return TRUE;
    } catch (...) {
        list->memoryExhausted = true;
        return FALSE;
    }
}

std::vector<HWND> TopLevelWindows() {
    WindowList list;
    EnumWindows(&AddToList, reinterpret_cast<LPARAM>(&list));
    if (list.memoryExhausted) {
        throw std::bad_alloc();
    }
    return std::move(list.windows);
}

// Puts the children of `window` on top of `pending`, the first one uppermost.
void PushChildren(HWND window, std::vector<HWND>& pending) {
    const std::size_t below = pending.size();
    HWND child = GetWindow(window, GW_CHILD);
    while (child && pending.size() < kMostWindows) {
        pending.push_back(child);
        child = GetWindow(child, GW_HWNDNEXT);
    }
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(below), pending.end());
}

// Waits unless `abort` is or becomes signalled. Whether the time has passed without it.
bool Pause(HANDLE abort, DWORD milliseconds) noexcept {
    return WaitForSingleObject(abort, milliseconds) == WAIT_TIMEOUT;
}

// The tick count wraps after 49 days; the difference does not mind.
DWORD ElapsedSince(DWORD start) noexcept {
    return GetTickCount() - start;
}

DWORD PositiveOr(LONG value, LONG otherwise) noexcept {
    return static_cast<DWORD>(value > 0 ? value : otherwise);
}

} // namespace

WindowFinder::WindowFinder(std::wstring_view topLevelPattern, std::wstring_view childPattern)
    : topLevel_(RegularExpression::ContainingMatch(topLevelPattern)),
      child_(RegularExpression::ContainingMatch(childPattern)),
      hasChildPattern_(!childPattern.empty()) {}

void WindowFinder::SetTimeLimit(LONG milliseconds) noexcept {
    timeLimitMs_ = PositiveOr(milliseconds, kDefaultTimeLimitMs);
}

void WindowFinder::SetCheckInterval(LONG milliseconds) noexcept {
    checkIntervalMs_ = PositiveOr(milliseconds, kDefaultCheckIntervalMs);
}

bool WindowFinder::IsValid() const noexcept {
    return topLevel_.IsValid() && child_.IsValid();
}

HWND WindowFinder::Find() {
    topLevel_.BeginOperation();
    child_.BeginOperation();
    for (HWND window : TopLevelWindows()) {
        if (topLevel_.Matches(title_.Read(window)) && (!hasChildPattern_ || FindBelow(window))) {
            return window;
        }
    }
    return nullptr;
}

HWND WindowFinder::FindBelow(HWND window) {
    std::vector<HWND> pending = {window};
    for (std::size_t seen = 0; !pending.empty() && seen < kMostWindows; ++seen) {
        HWND candidate = pending.back();
        pending.pop_back();
        if (child_.Matches(title_.Read(candidate))) {
            return candidate;
        }
        PushChildren(candidate, pending);
    }
    return nullptr;
}

// Only the first window found is looked at: when that one is invisible, a visible one behind it
// does not count. Deliberate, scripts rely on all members meaning the same window.
bool WindowFinder::IsAcceptable(HWND window) const noexcept {
    return window && IsWindow(window) && (!visibleOnly_ || IsWindowVisible(window));
}

bool WindowFinder::HasSeenAll() const noexcept {
    return !topLevel_.IsSpent() && !child_.IsSpent();
}

bool WindowFinder::IsKnownToBeGone() {
    HWND window = Find();
    return window ? !IsAcceptable(window) : HasSeenAll();
}

HWND WindowFinder::WaitUntilPresent(HANDLE abort) {
    const DWORD start = GetTickCount();
    do {
        if (HWND window = Find(); IsAcceptable(window)) {
            return window;
        }
        if (!Pause(abort, checkIntervalMs_)) {
            return nullptr;
        }
    } while (ElapsedSince(start) < timeLimitMs_);
    HWND window = Find();
    return IsAcceptable(window) ? window : nullptr;
}

bool WindowFinder::WaitUntilGone(HANDLE abort) {
    const DWORD start = GetTickCount();
    do {
        if (IsKnownToBeGone() && StaysGone(abort)) {
            return true;
        }
        if (!Pause(abort, checkIntervalMs_)) {
            return false;
        }
    } while (ElapsedSince(start) < timeLimitMs_);
    HWND window = Find();
    return window ? visibleOnly_ && !IsWindowVisible(window) : HasSeenAll();
}

// A program that replaces one window by another shows none for a moment.
bool WindowFinder::StaysGone(HANDLE abort) {
    const DWORD start = GetTickCount();
    do {
        if (!Pause(abort, kConfirmationIntervalMs) || !IsKnownToBeGone()) {
            return false;
        }
    } while (ElapsedSince(start) < checkIntervalMs_);
    return true;
}

} // namespace tervane
