#pragma once

// Waiting on a thread that owns windows. While such a thread merely waits, everybody who sends it a
// message waits too; when the awaited thread is one of them, both would wait for ever.

#include <span>

#include <windows.h>

namespace tervane {

// Waits for `handle`, dispatching this thread's messages meanwhile. True when the handle is
// signalled or abandoned, false when that has not happened after `milliseconds` or it cannot be
// waited for. A request to quit the host's message loop that arrives meanwhile is passed on to it.
bool WaitWhilePumping(HANDLE handle, DWORD milliseconds) noexcept;
// The same for the first of several handles, at most 63.
bool WaitForAnyWhilePumping(std::span<const HANDLE> handles, DWORD milliseconds) noexcept;

} // namespace tervane
