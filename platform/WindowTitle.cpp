#include "platform/WindowTitle.h"

#include <algorithm>

namespace tervane {

std::wstring_view WindowTitle::Read(HWND window) {
    text_[0] = 0;
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() && thread != GetCurrentThreadId()) {
        return {text_, ReadByMessage(window, thread)};
    }
    const size_t length = ReadWide(window);
    return {text_, length ? length : ReadNarrow(window)};
}

size_t WindowTitle::ReadWide(HWND window) {
    return static_cast<size_t>(GetWindowTextW(window, text_, kLongest + 1));
}

// Systems of the 9x family have no wide titles.
size_t WindowTitle::ReadNarrow(HWND window) {
    char narrow[kLongest + 1];
    const int length = GetWindowTextA(window, narrow, sizeof narrow);
    return length <= 0 ? 0
                       : static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, narrow, length, text_,
                                                                 static_cast<int>(kLongest)));
}

size_t WindowTitle::ReadByMessage(HWND window, DWORD thread) {
    DWORD_PTR length = 0;
    if (!IsSilent(thread)) {
        if (SendMessageTimeoutW(window, WM_GETTEXT, kLongest + 1, reinterpret_cast<LPARAM>(text_),
                                SMTO_ABORTIFHUNG, kPatience, &length)) {
            return std::min<size_t>(length, kLongest);
        }
        silentThreads_.push_back(thread);
    }
    return static_cast<size_t>(InternalGetWindowText(window, text_, kLongest + 1));
}

bool WindowTitle::IsSilent(DWORD thread) const {
    return std::ranges::find(silentThreads_, thread) != silentThreads_.end();
}

} // namespace tervane
