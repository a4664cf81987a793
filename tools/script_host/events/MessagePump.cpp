#include "tools/script_host/events/MessagePump.h"

namespace tervane::scripthost {
namespace {

// Dispatches what waits, but nothing posted after `deadline` (ticks): a sender that never rests
// must not keep a pump alive. False if such a message was met; it has been dispatched too, because
// it could not be put back.
bool DispatchWaiting(DWORD deadline, HANDLE wake) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
        if (static_cast<LONG>(message.time - deadline) > 0 ||
            WaitForSingleObject(wake, 0) == WAIT_OBJECT_0) {
            return false;
        }
    }
    return true;
}

} // namespace

void PumpMessages(DWORD milliseconds, HANDLE wake) {
    // Differences of ticks stay right when the count wraps.
    const DWORD start = GetTickCount();
    while (DispatchWaiting(start + milliseconds, wake)) {
        DWORD passed = GetTickCount() - start;
        if (passed >= milliseconds) {
            return;
        }
        if (MsgWaitForMultipleObjectsEx(1, &wake, milliseconds - passed, QS_ALLINPUT,
                                        MWMO_INPUTAVAILABLE) == WAIT_OBJECT_0) {
            return;
        }
    }
}

} // namespace tervane::scripthost
