#pragma once

#include <windows.h>

namespace tervane::scripthost {

// Waits on a thread with windows: dispatches every message posted to the thread within the next
// `milliseconds`, and with 0 those that wait already. Returns earlier when `wake` is signaled.
void PumpMessages(DWORD milliseconds, HANDLE wake);

} // namespace tervane::scripthost
