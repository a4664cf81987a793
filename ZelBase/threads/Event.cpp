#include "ZelBase/threads/Event.h"

#include "ZelBase/threads/Thread.h"
#include "ZelBase/threads/WIN32_ThreadWait.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Event> Event::Create() {
    std::unique_ptr<Event> event(new (std::nothrow) WIN32_Event);
    return event && event->IsValid() ? std::move(event) : nullptr;
}

WIN32_Event::WIN32_Event() noexcept : event_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}

void WIN32_Event::Reset() {
    RequireValid();
    ResetEvent(event_.Get());
}

void WIN32_Event::Set() {
    RequireValid();
    SetEvent(event_.Get());
}

bool WIN32_Event::IsValid() const {
    return static_cast<bool>(event_);
}

void WIN32_Event::Wait(Thread* thread) {
    if (!Wait(defaultTimeoutMs_, thread)) {
        throw ThreadTerminateException();
    }
}

bool WIN32_Event::Wait(std::uint32_t timeoutMs, Thread* thread) {
    RequireValid();
    switch (WaitTiedToThread(event_.Get(), timeoutMs, thread)) {
    case TiedWait::kAcquired:
        return true;
    case TiedWait::kTimedOut:
        return false;
    case TiedWait::kAbandoned: // events have no owner that could die
        break;
    }
    throw ThreadTerminateException();
}

void WIN32_Event::SetTimeout(std::uint32_t timeoutMs) {
    RequireValid();
    defaultTimeoutMs_ = timeoutMs;
}

void WIN32_Event::RequireValid() const {
    if (!IsValid()) {
        throw ThreadTerminateException();
    }
}

} // namespace ZelBase
