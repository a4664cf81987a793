#include "component/AdvisingThread.h"

#include "component/ModuleState.h"

#include <algorithm>
#include <vector>

namespace tervane {
namespace {

constexpr char kWindowClass[] = "TervaneEvents";
constexpr UINT kDeliver = WM_USER;
constexpr std::size_t kMostWaiting = 10'000;
// Handlers that dispatch messages let further events in; more than these would fill the stack.
constexpr int kMostNested = 16;

// The threads that advise at present, or did and have not been forgotten yet.
struct Threads {
    ZelBase::CriticalSection mutex;
    std::vector<std::weak_ptr<AdvisingThread>> all ZELBASE_GUARDED_BY(mutex);
};
Threads threads;

HINSTANCE OwnModule() noexcept {
    const ModuleState* state = ModuleState::Get();
    return state ? state->Instance() : GetModuleHandleW(nullptr);
}

// Registering a class that is there already fails, which does no harm: whoever registered it, it
// has the system's procedure.
HWND MakeWindow() noexcept {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcA;
    windowClass.hInstance = OwnModule();
    windowClass.lpszClassName = kWindowClass;
    RegisterClassA(&windowClass);
    return CreateWindowExA(0, kWindowClass, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                           windowClass.hInstance, nullptr);
}

std::vector<std::shared_ptr<AdvisingThread>> AllThreads() {
    const ZelBase::CriticalSectionLock lock(threads.mutex);
    std::vector<std::shared_ptr<AdvisingThread>> all;
    all.reserve(threads.all.size());
    for (const auto& known : threads.all) {
        if (auto thread = known.lock()) {
            all.push_back(std::move(thread));
        }
    }
    return all;
}

} // namespace

AdvisingThread::AdvisingThread() noexcept : window_(MakeWindow()) {
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), thread_.Put(),
                    SYNCHRONIZE, FALSE, 0);
    if (window_ && thread_) {
        SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure));
    }
}

AdvisingThread::~AdvisingThread() {
    LeaveWindow();
}

std::shared_ptr<AdvisingThread> AdvisingThread::Find(DWORD id) {
    const ZelBase::CriticalSectionLock lock(threads.mutex);
    for (const auto& known : threads.all) {
        if (auto thread = known.lock(); thread && thread->id_ == id) {
            return thread;
        }
    }
    return nullptr;
}

std::shared_ptr<AdvisingThread> AdvisingThread::Current() {
    if (auto known = Find(GetCurrentThreadId())) {
        return known;
    }
    ForgetEnded();
    std::shared_ptr<AdvisingThread> made(new AdvisingThread);
    if (!made->window_ || !made->thread_) {
        return nullptr;
    }
    const ZelBase::CriticalSectionLock lock(threads.mutex);
    std::erase_if(threads.all, [](const auto& known) { return known.expired(); });
    threads.all.push_back(made);
    return made;
}

void AdvisingThread::ForgetEnded() noexcept {
    try {
        for (const auto& thread : AllThreads()) {
            if (thread->HasEnded()) {
                Events dropped;
                const ZelBase::CriticalSectionLock lock(thread->mutex_);
                dropped.swap(thread->waiting_);
            }
        }
    } catch (const std::bad_alloc&) {
        // They are forgotten the next time.
    }
}

void AdvisingThread::LeaveWindows() noexcept {
    {
        const ZelBase::CriticalSectionLock lock(threads.mutex);
        for (const auto& known : threads.all) {
            if (const auto thread = known.lock()) {
                thread->LeaveWindow();
            }
        }
    }
    UnregisterClassA(kWindowClass, OwnModule());
}

// A window belongs to its thread and goes with it; then its handle may be another's.
bool AdvisingThread::HasWindow() const noexcept {
    return window_ && GetWindowThreadProcessId(window_, nullptr) == id_;
}

bool AdvisingThread::HasEnded() const noexcept {
    return WaitForSingleObject(thread_.Get(), 0) == WAIT_OBJECT_0;
}

// Only its own thread can destroy a window: the system's procedure does it there, on WM_CLOSE.
void AdvisingThread::LeaveWindow() noexcept {
    if (HasWindow()) {
        SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DefWindowProcA));
        if (IsCurrent()) {
            DestroyWindow(window_);
        } else {
            PostMessageA(window_, WM_CLOSE, 0, 0);
        }
    }
    window_ = nullptr;
}

bool AdvisingThread::Wake() noexcept {
    return HasWindow() && PostMessageA(window_, kDeliver, 0, 0);
}

bool AdvisingThread::Queue(AdvisedSink& sink, DISPID event, const DISPPARAMS& parameters) noexcept {
    if (HasEnded()) {
        Events dropped;
        const ZelBase::CriticalSectionLock lock(mutex_);
        dropped.swap(waiting_);
        return false;
    }
    try {
        Events added;
        added.emplace_back(sink, event, parameters);
        if (!added.front().IsValid()) {
            return false;
        }
        const ZelBase::CriticalSectionLock lock(mutex_);
        isWoken_ = isWoken_ || (waiting_.size() < kMostWaiting && Wake());
        if (!isWoken_ || waiting_.size() >= kMostWaiting) {
            return false;
        }
        waiting_.splice(waiting_.end(), added);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void AdvisingThread::Forget(const AdvisedSink& sink) noexcept {
    Events dropped; // released after the lock
    const ZelBase::CriticalSectionLock lock(mutex_);
    for (auto event = waiting_.begin(); event != waiting_.end();) {
        const auto next = std::next(event);
        if (event->IsFor(sink)) {
            dropped.splice(dropped.end(), waiting_, event);
        }
        event = next;
    }
}

// The next one is under way before this one is delivered: its sink may dispatch messages.
void AdvisingThread::DeliverFirst() noexcept {
    Events first;
    {
        const ZelBase::CriticalSectionLock lock(mutex_);
        if (!waiting_.empty() && nested_ < kMostNested) {
            first.splice(first.end(), waiting_, waiting_.begin());
        }
        isWoken_ = !waiting_.empty() && nested_ + 1 < kMostNested && Wake();
    }
    if (first.empty()) {
        return;
    }
    ++nested_;
    first.front().Deliver();
    --nested_;
    const ZelBase::CriticalSectionLock lock(mutex_);
    isWoken_ = isWoken_ || (!waiting_.empty() && Wake());
}

LRESULT CALLBACK AdvisingThread::Procedure(HWND window, UINT message, WPARAM wParam,
                                           LPARAM lParam) {
    if (message == WM_CLOSE) {
        return 0; // only its owner ends it, see LeaveWindow
    }
    if (message != kDeliver) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    const auto thread = Find(GetCurrentThreadId());
    if (thread && thread->window_ == window) {
        thread->DeliverFirst();
    }
    return 0;
}

} // namespace tervane
