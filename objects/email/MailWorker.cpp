#include "objects/email/MailWorker.h"

#include "ZelBase/Handles.h"
#include "ZelBase/threads/LocalMutex.h"
#include "ZelBase/threads/ModulePin.h"
#include "component/ComEdge.h"

#include <utility>

#include <objbase.h>

namespace tervane {

using ZelBase::LocalMutexLock;
using ZelBase::UniqueHandle;

// What the object and its thread have in common; it lives as long as either.
struct MailWorker::Shared {
    const UniqueHandle wake{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    ZelBase::LocalMutex mutex;
    // Null when the object is gone, or its thread, and before there is one.
    const PostbackWindow* window ZELBASE_GUARDED_BY(mutex) = nullptr;
    bool ending ZELBASE_GUARDED_BY(mutex) = false;
    bool started ZELBASE_GUARDED_BY(mutex) = false;
    // From Begin until the completion is taken: whatever is posted meanwhile changes nothing.
    bool busy ZELBASE_GUARDED_BY(mutex) = false;
    std::optional<MailTask> waiting ZELBASE_GUARDED_BY(mutex);
    std::optional<MailTask> completed ZELBASE_GUARDED_BY(mutex);
    std::function<void()> closeWhenLeft ZELBASE_GUARDED_BY(mutex);
};

MailWorker::MailWorker() : shared_(std::make_shared<Shared>()) {}

MailWorker::~MailWorker() {
    const LocalMutexLock lock(shared_->mutex);
    shared_->window = nullptr;
    shared_->ending = true;
    SetEvent(shared_->wake.Get());
}

bool MailWorker::Start() {
    {
        const LocalMutexLock lock(shared_->mutex);
        if (shared_->started || !shared_->wake) {
            return shared_->started;
        }
    }
    // Nobody posts to it yet. One that is gone is of a thread that has ended.
    if (!window_ || !IsWindow(window_->Handle())) {
        window_.emplace(static_cast<PostbackOwner&>(*this));
    }
    const LocalMutexLock lock(shared_->mutex);
    shared_->window = &*window_;
    shared_->started = static_cast<bool>(ZelBase::ModulePin::StartThread(
        [shared = shared_, thread = OpenThisThread()] { Run(*shared, thread.Get()); }));
    return shared_->started;
}

void MailWorker::CloseWhenLeft(std::function<void()> close) {
    const LocalMutexLock lock(shared_->mutex);
    shared_->closeWhenLeft.swap(close);
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
    SetEvent(shared_->wake.Get());
    return true;
}

// Anybody can post code 0; only a task whose work has ended makes the worker free. The task goes
// last: it may hold the last reference to the object that this belongs to.
void MailWorker::OnPostback(unsigned code, unsigned /*wParam*/) {
    std::optional<MailTask> task;
    if (code == 0) {
        const LocalMutexLock lock(shared_->mutex);
        task = std::exchange(shared_->completed, std::nullopt);
        shared_->busy = shared_->busy && !task;
    }
    if (task) {
        task->complete();
    }
}

void MailWorker::Run(Shared& shared, HANDLE objectThread) noexcept {
    // Without a window of its own the thread need not dispatch messages while it waits.
    const bool initialized = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    // A task that is waiting comes first: what was asked for is done even when nobody is left.
    const HANDLE reasons[] = {shared.wake.Get(), objectThread};
    const DWORD count = objectThread ? 2 : 1;
    for (bool ending = false; !ending;) {
        if (WaitForMultipleObjects(count, reasons, FALSE, INFINITE) != WAIT_OBJECT_0) {
            Leave(shared);
            break;
        }
        if (auto task = TakeWaiting(shared, ending)) {
            HandOver(shared, std::move(*task));
        }
    }
    if (initialized) {
        CoUninitialize();
    }
}

std::optional<MailTask> MailWorker::TakeWaiting(Shared& shared, bool& ending) {
    const LocalMutexLock lock(shared.mutex);
    ending = shared.ending;
    return std::exchange(shared.waiting, std::nullopt);
}

void MailWorker::HandOver(Shared& shared, MailTask task) noexcept {
    Contained(task.work); // if it throws, the completion tells that the outcome was never found out
    task.work = nullptr;  // with all it has copied
    bool posted = false;
    {
        const LocalMutexLock lock(shared.mutex);
        shared.completed = std::move(task);
        posted = shared.window && shared.window->Post(0, 0, 0);
    }
    if (!posted) {
        Abandon(shared); // the object's thread is gone, or has no window
    }
}

// The object's thread has ended. Whoever uses the object on another one, against all rules, gets a
// new worker and a new window there.
void MailWorker::Leave(Shared& shared) noexcept {
    std::optional<MailTask> waiting;
    std::function<void()> close;
    {
        const LocalMutexLock lock(shared.mutex);
        shared.started = false;
        shared.window = nullptr;
        shared.busy = true; // until all is closed
        waiting = std::exchange(shared.waiting, std::nullopt);
        close.swap(shared.closeWhenLeft);
    }
    if (close) {
        close();
    }
    Abandon(shared);
}

// Gives back a task whose completion nobody takes: the event is lost, but not the object.
void MailWorker::Abandon(Shared& shared) noexcept {
    std::optional<MailTask> task;
    {
        const LocalMutexLock lock(shared.mutex);
        task = std::exchange(shared.completed, std::nullopt);
    }
    if (task && task->abandon) {
        task->abandon();
    }
    const LocalMutexLock lock(shared.mutex);
    shared.busy = false;
}

} // namespace tervane
