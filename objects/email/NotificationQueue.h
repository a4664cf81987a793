#pragma once

// How a worker waits for its protocol client: the client's notifications are put in on a socket
// event thread and taken out, in their order, by the worker, which sleeps meanwhile.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/LocalMutex.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <utility>

namespace tervane {

// How long one step of a conversation may still take, by the tick counter.
class StepDeadline {
public:
    // Counts from now. A time-out that is not positive is over at once.
    explicit StepDeadline(long seconds) noexcept
        : start_(GetTickCount()), limitMs_(std::max<std::int64_t>(seconds, 0) * 1000) {}

    // Milliseconds, 0 when the time is over. Right for limits below the 49 days of the counter.
    DWORD Remaining() const noexcept {
        const std::int64_t elapsed = GetTickCount() - start_; // modulo the counter's size
        return static_cast<DWORD>(std::clamp<std::int64_t>(limitMs_ - elapsed, 0, INFINITE - 1));
    }

private:
    DWORD start_;
    std::int64_t limitMs_;
};

enum class QueueWait { kNotified, kAborted, kTimedOut, kNoMemory };

template <typename Notification>
class NotificationQueue {
public:
    // Any thread. What cannot be kept is lost, and every wait from then on says so.
    void Put(Notification notification) noexcept {
        const ZelBase::LocalMutexLock lock(mutex_);
        try {
            queue_.push_back(std::move(notification));
        } catch (...) {
            incomplete_ = true;
        }
        SetEvent(arrived_.Get());
    }
    // Ends the wait that runs, and later ones, until Clear. Any thread.
    void Abort() {
        const ZelBase::LocalMutexLock lock(mutex_);
        aborted_ = true;
        SetEvent(arrived_.Get());
    }
    bool IsAborted() {
        const ZelBase::LocalMutexLock lock(mutex_);
        return aborted_;
    }
    // Forgets notifications and abort; while nobody waits.
    void Clear() {
        const ZelBase::LocalMutexLock lock(mutex_);
        queue_.clear();
        aborted_ = incomplete_ = false;
    }
    // Takes the oldest notification, waiting for one. What has arrived comes before an abort, and
    // both come before the end of the time.
    QueueWait Wait(const StepDeadline& deadline, Notification& notification) {
        for (;;) {
            {
                const ZelBase::LocalMutexLock lock(mutex_);
                if (incomplete_) {
                    return QueueWait::kNoMemory;
                }
                if (!queue_.empty()) {
                    notification = std::move(queue_.front());
                    queue_.pop_front();
                    return QueueWait::kNotified;
                }
                if (aborted_) {
                    return QueueWait::kAborted;
                }
                ResetEvent(arrived_.Get());
            }
            const DWORD remaining = deadline.Remaining();
            if (remaining == 0) {
                return QueueWait::kTimedOut;
            }
            WaitForSingleObject(arrived_.Get(), remaining);
        }
    }

private:
    ZelBase::LocalMutex mutex_;
    std::deque<Notification> queue_ ZELBASE_GUARDED_BY(mutex_);
    bool aborted_ ZELBASE_GUARDED_BY(mutex_) = false;
    bool incomplete_ ZELBASE_GUARDED_BY(mutex_) = false;
    // Set when there may be something to take.
    const ZelBase::UniqueHandle arrived_{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
};

} // namespace tervane
