#include "tools/script_host/events/EventQueue.h"

namespace tervane::scripthost {
namespace {

constexpr wchar_t kWindowClass[] = L"ScriptHostEvents";
constexpr UINT kEventsArrived = WM_APP;

// A handler that sleeps lets further events in, on top of itself. Fast events would pile up
// handlers until the stack is full; from this depth on they wait in the queue.
constexpr unsigned kDeepestNesting = 16;

// Few enough for a WScript.Sleep to end about in time, enough to make the messages cheap.
constexpr std::size_t kEventsPerMessage = 64;

} // namespace

EventQueue::EventQueue(EventReceiver& receiver) : receiver_(&receiver), window_(MakeWindow()) {}

EventQueue::UniqueWindow EventQueue::MakeWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = WindowProcedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kWindowClass;
    RegisterClassW(&description);
    HWND window = CreateWindowExW(0, kWindowClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  description.hInstance, nullptr);
    if (window != nullptr) {
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    return UniqueWindow(window);
}

LRESULT EventQueue::WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* queue = reinterpret_cast<EventQueue*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != kEventsArrived || queue == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    queue->OnWake();
    return 0;
}

bool EventQueue::IsOpen() {
    const ZelBase::CriticalSectionLock lock(mutex_);
    return static_cast<bool>(window_);
}

bool EventQueue::Post(ULONG connection, std::wstring event, EventArguments arguments) {
    const ZelBase::CriticalSectionLock lock(mutex_);
    if (!window_) {
        return true;
    }
    if (events_.size() >= kLongestQueue) {
        return false;
    }
    events_.push_back({connection, std::move(event), std::move(arguments)});
    WakeIfNeeded();
    return true;
}

// Keeps one message under way as long as there are events. With the mutex held.
void EventQueue::WakeIfNeeded() noexcept {
    if (!events_.empty() && !wakeUnderWay_) {
        wakeUnderWay_ = PostMessageW(window_.Get(), kEventsArrived, 0, 0) != 0;
    }
}

void EventQueue::OnWake() noexcept {
    {
        const ZelBase::CriticalSectionLock lock(mutex_);
        wakeUnderWay_ = false;
    }
    if (nesting_ == kDeepestNesting) {
        return;
    }
    ++nesting_;
    DeliverUpTo(kEventsPerMessage);
    --nesting_;
    const ZelBase::CriticalSectionLock lock(mutex_);
    WakeIfNeeded();
}

void EventQueue::DeliverArrived() noexcept {
    std::size_t count = 0;
    {
        const ZelBase::CriticalSectionLock lock(mutex_);
        count = events_.size();
    }
    DeliverUpTo(count);
}

void EventQueue::DeliverUpTo(std::size_t count) noexcept {
    for (; count != 0; --count) {
        std::optional<Event> event = Next();
        if (!event) {
            return;
        }
        DISPPARAMS arguments = event->arguments.Unpack();
        Deliver(event->connection, event->name, arguments);
    }
}

std::optional<EventQueue::Event> EventQueue::Next() noexcept {
    const ZelBase::CriticalSectionLock lock(mutex_);
    if (events_.empty()) {
        return std::nullopt;
    }
    Event event = std::move(events_.front());
    events_.pop_front();
    // The handler may pump messages itself, and then wants the remaining events.
    WakeIfNeeded();
    return event;
}

void EventQueue::Deliver(ULONG connection, const std::wstring& event,
                         DISPPARAMS& arguments) noexcept {
    if (receiver_ != nullptr) {
        receiver_->OnEvent(connection, event, arguments);
    }
}

void EventQueue::Close() {
    receiver_ = nullptr;
    std::deque<Event> dropped;
    UniqueWindow window;
    const ZelBase::CriticalSectionLock lock(mutex_);
    // Both are destroyed after the lock is given back: that runs other code.
    dropped.swap(events_);
    window = std::move(window_);
}

} // namespace tervane::scripthost
