#include "platform/PumpingWait.h"

#include <optional>

namespace tervane {
namespace {

// Dispatches messages. Taking WM_QUIT off the queue uses it up: it is posted again at the end.
class MessagePump {
public:
    ~MessagePump() {
        if (quit_) {
            PostQuitMessage(*quit_);
        }
    }
    // False when no message is waiting.
    bool DispatchOne() noexcept {
        MSG message;
        if (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            return false;
        }
        if (message.message == WM_QUIT) {
            quit_ = static_cast<int>(message.wParam);
        } else {
            DispatchMessageA(&message);
        }
        return true;
    }

private:
    std::optional<int> quit_;
};

// Whether the result of a wait for `count` handles names one of them.
bool IsHandle(DWORD result, DWORD count) noexcept {
    return result < WAIT_OBJECT_0 + count ||
           (result >= WAIT_ABANDONED_0 && result < WAIT_ABANDONED_0 + count);
}

bool IsAnySet(std::span<const HANDLE> handles) noexcept {
    const auto count = static_cast<DWORD>(handles.size());
    return IsHandle(WaitForMultipleObjects(count, handles.data(), FALSE, 0), count);
}

} // namespace

bool WaitWhilePumping(HANDLE handle, DWORD milliseconds) noexcept {
    return WaitForAnyWhilePumping({&handle, 1}, milliseconds);
}

bool WaitForAnyWhilePumping(std::span<const HANDLE> handles, DWORD milliseconds) noexcept {
    MessagePump pump;
    const auto count = static_cast<DWORD>(handles.size());
    const DWORD start = GetTickCount();
    for (;;) {
        const DWORD elapsed = GetTickCount() - start;
        if (elapsed >= milliseconds) {
            return IsAnySet(handles);
        }
        if (pump.DispatchOne()) {
            if (IsAnySet(handles)) { // messages need not ever pause
                return true;
            }
            continue;
        }
        const DWORD left = milliseconds == INFINITE ? INFINITE : milliseconds - elapsed;
        const DWORD result =
            MsgWaitForMultipleObjects(count, handles.data(), FALSE, left, QS_ALLINPUT);
        if (result == WAIT_TIMEOUT || result == WAIT_FAILED) {
            return false;
        }
        if (IsHandle(result, count)) {
            return true;
        }
    }
}

} // namespace tervane
