#include "objects/config/windows/WindowTitle.h"

namespace tervane {

std::wstring_view WindowTitle::Read(HWND window) noexcept {
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    if (thread == 0) {
        return {};
    }
    if (process == GetCurrentProcessId() && thread != GetCurrentThreadId()) {
        const int length = InternalGetWindowText(window, text_, kLongest + 1);
        return {text_, static_cast<size_t>(length)};
    }
    const size_t length = ReadWide(window);
    return {text_, length ? length : ReadNarrow(window)};
}

size_t WindowTitle::ReadWide(HWND window) noexcept {
    return static_cast<size_t>(GetWindowTextW(window, text_, kLongest + 1));
}

// Systems of the 9x family have no wide titles.
size_t WindowTitle::ReadNarrow(HWND window) noexcept {
    char narrow[kLongest + 1];
    const int length = GetWindowTextA(window, narrow, sizeof narrow);
    // Of a window that has just died, some systems hand out what happened to lie in the memory.
    if (length <= 0 || !IsWindow(window)) {
        return 0;
    }
    return static_cast<size_t>(
        MultiByteToWideChar(CP_ACP, 0, narrow, length, text_, static_cast<int>(kLongest)));
}

} // namespace tervane
