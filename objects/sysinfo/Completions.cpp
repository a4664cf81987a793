#include "objects/sysinfo/Completions.h"

namespace tervane {

using ZelBase::LocalMutexLock;

void Completions::Post(const PostbackWindow& window, ComPtr<IUnknown> object) noexcept {
    // Under the lock: once another thread can take the reference, the window may be gone.
    const LocalMutexLock lock(mutex_);
    try {
        waiting_.push_back(std::move(object));
    } catch (...) {
        return; // no memory for the event; `object` still goes
    }
    if (!window.Post(0, 0, 0)) {
        object = std::move(waiting_.back());
        waiting_.pop_back();
    }
}

ComPtr<IUnknown> Completions::Take() noexcept {
    const LocalMutexLock lock(mutex_);
    if (waiting_.empty()) {
        return {};
    }
    ComPtr<IUnknown> object = std::move(waiting_.back());
    waiting_.pop_back();
    return object;
}

} // namespace tervane
