#pragma once

// Brings events to the script's thread. Sources may fire on any thread, yet a script engine may be
// entered on its own only. Events from elsewhere are queued, and a message to a hidden window makes
// whoever pumps messages on the script's thread deliver them: WScript.Sleep, a message box, any
// call that COM waits for.
//
// The firing thread never waits. A script's thread can be blocked for long - in the destructor of
// an object that waits for the very worker which is firing - and a sink that waited for it would
// deadlock. Nothing is lost by that: an event has no result that a source could use.
//
// Sinks share the queue and may outlive the script; once the queue is closed, events are dropped.
// A source that never rests is stopped by the queue's length before it has eaten all memory.

#include "ZelBase/UniqueResource.h"
#include "ZelBase/threads/CriticalSection.h"
#include "tools/script_host/events/EventArguments.h"

#include <windows.h>

#include <deque>
#include <optional>
#include <string>

namespace tervane::scripthost {

// Takes the events, on the script's thread.
class EventReceiver {
public:
    // `connection` tells which connection fired; it may be gone by now.
    virtual void OnEvent(ULONG connection, const std::wstring& event,
                         DISPPARAMS& arguments) noexcept = 0;

protected:
    ~EventReceiver() = default;
};

class EventQueue {
public:
    static constexpr std::size_t kLongestQueue = 100'000;

    // On the script's thread. `receiver` must live until Close.
    explicit EventQueue(EventReceiver& receiver);
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    // Any thread. False after Close, and if the system had no window left; then events are dropped.
    bool IsOpen();
    bool IsOwnThread() const noexcept { return GetCurrentThreadId() == thread_; }
    // Any thread; never waits for other code. Events are delivered in the order of these calls.
    // False, and the event is lost, while kLongestQueue events wait.
    bool Post(ULONG connection, std::wstring event, EventArguments arguments);
    // Own thread: hands the event straight to the receiver, arguments by reference intact.
    void Deliver(ULONG connection, const std::wstring& event, DISPPARAMS& arguments) noexcept;
    // Own thread: delivers all that is queued by now.
    void DeliverArrived() noexcept;
    // Own thread. Drops what is queued and all that comes later; the receiver is not called again.
    void Close();

private:
    struct Event {
        ULONG connection;
        std::wstring name;
        EventArguments arguments;
    };
    struct WindowTraits {
        using Type = HWND;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type window) noexcept { DestroyWindow(window); }
    };
    using UniqueWindow = ZelBase::UniqueResource<WindowTraits>;

    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM, LPARAM);
    UniqueWindow MakeWindow();
    void OnWake() noexcept;
    void DeliverUpTo(std::size_t count) noexcept;
    std::optional<Event> Next() noexcept;
    void WakeIfNeeded() noexcept;

    const DWORD thread_ = GetCurrentThreadId();
    EventReceiver* receiver_; // own thread; null after Close
    unsigned nesting_ = 0;    // own thread

    ZelBase::CriticalSection mutex_; // guards what follows
    std::deque<Event> events_;
    UniqueWindow window_;
    bool wakeUnderWay_ = false;
};

} // namespace tervane::scripthost
