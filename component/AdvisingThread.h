#pragma once

// A thread that has advised sinks, and the way to it from other threads: a message-only window that
// it owns as long as one of its sinks is advised, or an event waits for one. What is queued here is
// delivered when the thread dispatches messages.
//
// - The window is message-only because a top-level one, on a thread that does not dispatch, would
//   hold up every broadcast of the system. Systems that have no message-only windows (before
//   Windows 2000) get none.
// - Its class, and the window while it is nobody's any more, have the system's own procedure, so
//   that nothing points into this library after it is unloaded.
// - A thread may end without a word. Whatever waits for it then is dropped when somebody fires to
//   it, another thread begins to advise, or somebody asks whether the library can be unloaded.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/CriticalSection.h"
#include "component/AdvisedSink.h"

#include <list>
#include <memory>

namespace tervane {

class AdvisingThread {
public:
    // The calling thread, with its window. Null when no window can be made. Throws std::bad_alloc.
    static std::shared_ptr<AdvisingThread> Current();

    // Drops what waits for threads that have ended. Any thread.
    static void ForgetEnded() noexcept;

    // Before the library is unloaded: no window and no class leads into it any more.
    static void LeaveWindows() noexcept;

    // Any thread.
    ~AdvisingThread();
    AdvisingThread(const AdvisingThread&) = delete;
    AdvisingThread& operator=(const AdvisingThread&) = delete;

    bool IsCurrent() const noexcept { return GetCurrentThreadId() == id_; }

    // Delivers the event on this thread, after all that are queued before it. False, and the event
    // is lost, when the thread has ended, more than 10,000 wait, or memory or its message queue is
    // exhausted. Any thread.
    bool Queue(AdvisedSink& sink, DISPID event, const DISPPARAMS& parameters) noexcept;

    // Drops what waits for this sink. Any thread.
    void Forget(const AdvisedSink& sink) noexcept;

private:
    using Events = std::list<PendingEvent>;

    AdvisingThread() noexcept;

    static std::shared_ptr<AdvisingThread> Find(DWORD id);
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    bool HasWindow() const noexcept;
    bool HasEnded() const noexcept;
    bool Wake() noexcept;
    void DeliverFirst() noexcept;
    void LeaveWindow() noexcept;

    const DWORD id_ = GetCurrentThreadId();
    // Keeps the identifier from being given to another thread.
    ZelBase::UniqueHandle thread_;
    HWND window_ = nullptr;
    // Deliveries that are under way; its own thread's alone.
    int nested_ = 0;

    ZelBase::CriticalSection mutex_;
    // In the order of their firing. They hold this object through their sinks.
    Events waiting_ ZELBASE_GUARDED_BY(mutex_);
    // Whether a message is under way that will take the first of them.
    bool isWoken_ ZELBASE_GUARDED_BY(mutex_) = false;
};

} // namespace tervane
