#include "component/Completions.h"

#include "platform/PumpingWait.h"

namespace tervane {

using ZelBase::LocalMutexLock;

Completions::Completions() noexcept
    : thread_(OpenThisThread()), allTaken_(CreateEventA(nullptr, TRUE, TRUE, nullptr)) {}

void Completions::Post(const PostbackWindow& window, End end) noexcept {
    {
        // Under the lock: once another thread can take the reference, the window may be gone.
        const LocalMutexLock lock(mutex_);
        if (!window.Post(0, 0, 0)) {
            return; // `end` still goes
        }
        waiting_.splice(waiting_.end(), end);
        if (!BeginWatch()) {
            return;
        }
    }
    const HANDLE reasons[] = {allTaken_.Get(), thread_.Get()};
    while (!EndWatch() && WaitForAnyWhilePumping(reasons, INFINITE)) {
        if (WaitForSingleObject(thread_.Get(), 0) == WAIT_OBJECT_0) {
            GiveBack();
        }
    }
}

ComPtr<IUnknown> Completions::Take() noexcept {
    const LocalMutexLock lock(mutex_);
    if (waiting_.empty()) {
        return {};
    }
    ComPtr<IUnknown> object = std::move(waiting_.front());
    waiting_.pop_front();
    if (waiting_.empty()) {
        SetEvent(allTaken_.Get());
    }
    return object;
}

bool Completions::BeginWatch() {
    ResetEvent(allTaken_.Get());
    if (isWatched_ || !thread_ || !allTaken_) {
        return false;
    }
    isWatched_ = true;
    return true;
}

// What comes after this finds that nobody watches.
bool Completions::EndWatch() noexcept {
    const LocalMutexLock lock(mutex_);
    isWatched_ = !waiting_.empty();
    return !isWatched_;
}

void Completions::GiveBack() noexcept {
    End lost; // goes after the lock, perhaps with the object
    const LocalMutexLock lock(mutex_);
    lost.swap(waiting_);
}

} // namespace tervane
