#include "objects/email/MailWorker.h"

#include "ZelBase/LocalMutex.h"
#include "ZelBase/ModulePin.h"
#include "ZelBase/WIN32_Event.h"

#include <optional>
#include <utility>

#include <objbase.h>

namespace tervane {

using ZelBase::LocalMutexLock;

// What the object and its thread have in common; it lives as long as either.
struct MailWorker::Shared {
    ZelBase::WIN32_Event wake;
    ZelBase::LocalMutex mutex;
    // Null when the object is gone.
    const PostbackWindow* window ZELBASE_GUARDED_BY(mutex) = nullptr;
    bool started ZELBASE_GUARDED_BY(mutex) = false;
    bool busy ZELBASE_GUARDED_BY(mutex) = false;
    std::optional<MailTask> waiting ZELBASE_GUARDED_BY(mutex);
    MailTask completed ZELBASE_GUARDED_BY(mutex);
};

MailWorker::MailWorker(const PostbackWindow& window) : shared_(std::make_shared<Shared>()) {
    const LocalMutexLock lock(shared_->mutex);
    shared_->window = &window;
}

MailWorker::~MailWorker() {
    const LocalMutexLock lock(shared_->mutex);
    shared_->window = nullptr;
    if (shared_->wake.IsValid()) {
        shared_->wake.Set();
    }
}

bool MailWorker::Start() {
    const LocalMutexLock lock(shared_->mutex);
    if (!shared_->started && shared_->wake.IsValid()) {
        shared_->started = static_cast<bool>(
            ZelBase::ModulePin::StartThread([shared = shared_] { Run(*shared); }));
    }
    return shared_->started;
}

bool MailWorker::IsBusy() const {
    const LocalMutexLock lock(shared_->mutex);
    return shared_->busy;
}

bool MailWorker::Begin(MailTask task) {
    const LocalMutexLock lock(shared_->mutex);
    if (shared_->busy) {
        return false;
    }
    shared_->busy = true;
    shared_->waiting = std::move(task);
    shared_->wake.Set();
    return true;
}

MailTask MailWorker::TakeCompleted() {
    const LocalMutexLock lock(shared_->mutex);
    shared_->busy = false;
    return std::exchange(shared_->completed, {});
}

void MailWorker::Run(Shared& shared) noexcept {
    // Without a window of its own the thread need not dispatch messages while it waits.
    const bool initialized = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    for (bool ending = false; !ending;) {
        shared.wake.Wait(nullptr);
        std::optional<MailTask> task;
        {
            const LocalMutexLock lock(shared.mutex);
            shared.wake.Reset();
            task = std::exchange(shared.waiting, std::nullopt);
            ending = !shared.window;
        }
        if (task) {
            HandOver(shared, std::move(*task));
        }
    }
    if (initialized) {
        CoUninitialize();
    }
}

void MailWorker::HandOver(Shared& shared, MailTask task) noexcept {
    try {
        task.work();
    } catch (...) {
        // The completion tells what had been found out until then.
    }
    task.work = nullptr; // with all it has copied
    const LocalMutexLock lock(shared.mutex);
    shared.completed = std::move(task);
    if (!shared.window || !shared.window->Post(0, 0, 0)) {
        // The object's thread is gone, or has no window: the event is lost, but not the object.
        task = std::exchange(shared.completed, {});
        shared.busy = false;
    }
}

} // namespace tervane
