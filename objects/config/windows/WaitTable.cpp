#include "objects/config/windows/WaitTable.h"

#include "ZelBase/threads/ModulePin.h"
#include "ZelBase/threads/Mutex.h"
#include "component/ComEdge.h"
#include "platform/PumpingWait.h"
#include "platform/text/MatchingLock.h"

namespace tervane {

using ZelBase::TimedMutexLock;

// What a wait thread owns.
class WaitTable::Running {
public:
    Running(std::shared_ptr<WaitTable> table, LONG id, HANDLE abort, std::unique_ptr<WaitTask> task)
        : table_(std::move(table)), id_(id), abort_(abort), task_(std::move(task)) {}

    void Run() noexcept {
        if (const auto result = table_->Finish(id_, Wait())) {
            task_->Report(id_, *result);
        }
    }

private:
    // Memory may run out: then the condition was not seen to be met.
    std::optional<WaitResult> Wait() noexcept {
        return Contained([&] { return task_->Wait(abort_); }, WaitResult::kTimedOut);
    }

    std::shared_ptr<WaitTable> table_;
    LONG id_;
    HANDLE abort_;
    std::unique_ptr<WaitTask> task_;
};

LONG WaitTable::Start(std::unique_ptr<WaitTask> task) {
    const LONG id = nextId_++;
    const TimedMutexLock lock(lock_.get(), kScriptPatienceMs);
    if (!lock || closing_) {
        return 0;
    }
    Entry entry;
    entry.abortEvent.Reset(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!entry.abortEvent) {
        return 0;
    }
    auto running =
        std::make_unique<Running>(shared_from_this(), id, entry.abortEvent.Get(), std::move(task));
    Entry& placed = entries_.emplace(id, std::move(entry)).first->second;
    // However soon the wait ends, it finds its entry only when this lock is free.
    placed.thread =
        ZelBase::ModulePin::StartThread(&WaitTable::Run, running.get(), &placed.threadId);
    if (!placed.thread) {
        entries_.erase(id);
        return 0;
    }
    static_cast<void>(running.release()); // the thread's now
    return id;
}

DWORD WINAPI WaitTable::Run(void* running) noexcept {
    const std::unique_ptr<Running> wait(static_cast<Running*>(running));
    wait->Run();
    return 0;
}

WaitTable::AbortResult WaitTable::Abort(LONG id) {
    const TimedMutexLock lock(lock_.get(), kScriptPatienceMs);
    if (!lock) {
        return AbortResult::kLocked;
    }
    const auto entry = entries_.find(id);
    if (entry == entries_.end()) {
        return AbortResult::kUnknown;
    }
    entry->second.aborted = true;
    SetEvent(entry->second.abortEvent.Get());
    return AbortResult::kAborted;
}

// What a wait that ended with `seen` reports. An abort that came in time wins over everything else,
// the end of the owner silences every report.
std::optional<WaitResult> WaitTable::Finish(LONG id, std::optional<WaitResult> seen) {
    const TimedMutexLock lock(lock_.get(), kWaitPatienceMs);
    if (!lock) {
        return seen;
    }
    if (closing_) {
        return std::nullopt;
    }
    const auto entry = entries_.find(id);
    if (entry != entries_.end() && entry->second.aborted) {
        entries_.erase(entry);
        return WaitResult::kAborted;
    }
    return seen;
}

void WaitTable::Close() {
    if (!SignalAll()) {
        KillAll();
        return;
    }
    while (EndFirst()) {
    }
}

bool WaitTable::SignalAll() {
    const TimedMutexLock lock(lock_.get(), kClosePatienceMs);
    if (!lock) {
        return false;
    }
    closing_ = true;
    for (auto& [id, entry] : entries_) {
        entry.aborted = false;
        SetEvent(entry.abortEvent.Get());
    }
    return true;
}

// Ends the first thread of the table; false when there is none left. The lock is free while the
// thread is waited for, because it needs the lock to come to its end.
bool WaitTable::EndFirst() {
    LONG id = 0;
    HANDLE thread = nullptr;
    {
        const TimedMutexLock lock(lock_.get(), kClosePatienceMs);
        if (!lock) {
            KillAll();
            return false;
        }
        if (entries_.empty()) {
            return false;
        }
        const auto& [firstId, first] = *entries_.begin();
        id = firstId;
        thread = first.IsOwnThread() ? nullptr : first.thread.Get();
    }
    if (thread && !WaitWhilePumping(thread, kThreadPatienceMs)) {
        ThreadKiller().Kill(thread);
    }
    const TimedMutexLock lock(lock_.get(), kClosePatienceMs);
    if (!lock) {
        KillAll();
        return false;
    }
    entries_.erase(id);
    return true;
}

// The last resort when the lock cannot be had: whoever holds it is among the threads, and stuck.
void WaitTable::KillAll() {
    ThreadKiller killer;
    for (auto& [id, entry] : entries_) {
        if (!entry.IsOwnThread()) {
            killer.Kill(entry.thread.Get());
        }
    }
    entries_.clear();
}

} // namespace tervane
