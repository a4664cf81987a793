#pragma once

// The waits of one window manager, each on a thread of its own: who runs, how one is aborted, and
// how all of them end with their owner.
//
// The owner can end at any time, and even on a wait thread: a listener may drop the owner's last
// reference inside the report. So a wait thread touches nothing of the owner. The table is shared
// between the owner and the threads and goes with the last of them.
//
// An entry stays until its owner ends, so that aborting a wait that has ended by itself is still a
// success; only an aborted wait takes its entry out. The abort event of a wait is used by its
// thread up to the moment when it looks up its entry for the last time; thereafter anybody who
// holds the lock may close it.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Mutex.h"

#include <windows.h>

#include <atomic>
#include <map>
#include <memory>
#include <optional>

namespace tervane {

// What a wait thread does, without the thread: it waits, and it tells how that ended.

// The numbers are what scripts see.
enum class WaitResult : LONG { kMet = 0, kTimedOut = 1, kAborted = 2 };

// Made on the thread that starts the wait, used and destroyed on the wait thread.
class WaitTask {
public:
    virtual ~WaitTask() = default;

    // Waits; nullopt, and soon, when `abort` (an event) is signalled. Whatever it throws counts as
    // a time-out.
    virtual std::optional<WaitResult> Wait(HANDLE abort) = 0;
    // Called once when the wait has ended with something to tell.
    virtual void Report(LONG id, WaitResult result) noexcept = 0;
};

class WaitTable : public std::enable_shared_from_this<WaitTable> {
public:
    // How long the lock is waited for, and at the end each thread.
    static constexpr DWORD kScriptPatienceMs = 1000;
    static constexpr DWORD kWaitPatienceMs = 10000;
    static constexpr DWORD kClosePatienceMs = 5000;
    static constexpr DWORD kThreadPatienceMs = 30000;

    enum class AbortResult { kAborted, kUnknown, kLocked };

    // Use std::make_shared.
    WaitTable() : lock_(ZelBase::Mutex::Create()) {}
    WaitTable(const WaitTable&) = delete;
    WaitTable& operator=(const WaitTable&) = delete;

    // Starts a thread for `task`. The identifier counts from 1 and is never used again; 0 when the
    // lock or a thread cannot be had.
    LONG Start(std::unique_ptr<WaitTask> task);

    // Tells the wait to end; it then reports kAborted, unless it has reported already.
    AbortResult Abort(LONG id);

    // For the owner's end: every running wait ends without a report, and its thread is waited for
    // while this thread's messages are dispatched. A thread that does not end is killed. The thread
    // that calls this may be a wait thread itself; it is left to end on its own.
    void Close();

private:
    struct Entry {
        ZelBase::UniqueHandle abortEvent;
        ZelBase::UniqueHandle thread;
        DWORD threadId = 0;
        bool aborted = false;

        // A number stays a thread's own as long as its handle is open.
        bool IsOwnThread() const noexcept { return threadId == GetCurrentThreadId(); }
    };
    using Entries = std::map<LONG, Entry>;
    class Running;

    static DWORD WINAPI Run(void* running) noexcept;

    std::optional<WaitResult> Finish(LONG id, std::optional<WaitResult> seen);
    bool SignalAll();
    bool EndFirst();
    void KillAll() ZELBASE_NO_LOCK_ANALYSIS; // the lock cannot be had

    std::unique_ptr<ZelBase::Mutex> lock_;
    std::atomic<LONG> nextId_ = 1;
    Entries entries_ ZELBASE_GUARDED_BY(lock_);
    bool closing_ ZELBASE_GUARDED_BY(lock_) = false;
};

} // namespace tervane
