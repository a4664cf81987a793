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

} // namespace

bool WaitWhilePumping(HANDLE handle, DWORD milliseconds) noexcept {
    MessagePump pump;
    const DWORD start = GetTickCount();
    for (;;) {
        const DWORD elapsed = GetTickCount() - start;
        if (elapsed >= milliseconds) {
            return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
        }
        if (pump.DispatchOne()) {
            if (WaitForSingleObject(handle, 0) == WAIT_OBJECT_0) { // messages need not ever pause
                return true;
            }
            continue;
        }
        switch (MsgWaitForMultipleObjects(1, &handle, FALSE, milliseconds - elapsed, QS_ALLINPUT)) {
        case WAIT_OBJECT_0:
        case WAIT_ABANDONED_0:
            return true;
        case WAIT_OBJECT_0 + 1:
        case WAIT_ABANDONED_0 + 1:
            break;
        default: // time-out or failure
            return false;
        }
    }
}

} // namespace tervane
