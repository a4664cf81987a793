#pragma once

// Work that may never end, on a thread of its own while the caller waits for it. It ends in one of
// the ways below; a thread that has not ended in time is terminated.

#include <functional>

#include <windows.h>

namespace tervane {

enum class BoundedEnd {
    // The work has ended, perhaps by an exception, or the thread ended itself.
    kEnded,
    kTimedOut,
    kNotStarted,
};

// INFINITE for no limit. Killing may take six seconds more. What `work` writes must be shared with
// it, not borrowed from the caller: after kTimedOut it may be left half written, and is leaked
// together with `work`. Throws std::bad_alloc.
BoundedEnd RunBounded(std::function<void()> work, DWORD milliseconds);

} // namespace tervane
