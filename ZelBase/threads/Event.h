#pragma once

// A manual-reset event: once set, it lets every waiter through until it is reset.
//
// A wait that is given the calling thread's own Thread also ends, with ThreadTerminateException,
// when that thread is told to terminate. Without one it waits for the event alone. Every operation
// but IsValid throws ThreadTerminateException when the event has no kernel object.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/Timeout.h"

#include <memory>

namespace ZelBase {

class Thread;

class Event {
public:
    // A new event, not set; null when it cannot be made.
    static std::unique_ptr<Event> Create();

    virtual void Reset() = 0;
    virtual void Set() = 0;
    virtual bool IsValid() const = 0;
    // Waits for the default time-out. There is no false result: running out of time throws
    // ThreadTerminateException.
    virtual void Wait(Thread* thread) = 0;
    // True when the event was set, false when time ran out.
    virtual bool Wait(std::uint32_t timeoutMs, Thread* thread) = 0;
    // Sets the default time-out, initially kInfinite; for the time before threads share the event.
    virtual void SetTimeout(std::uint32_t timeoutMs) = 0;
    virtual ~Event() = default;

protected:
    Event() = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    std::uint32_t defaultTimeoutMs_ = kInfinite;
};

class WIN32_Event final : public Event {
public:
    WIN32_Event() noexcept;

    void Reset() override;
    void Set() override;
    bool IsValid() const override;
    void Wait(Thread* thread) override;
    bool Wait(std::uint32_t timeoutMs, Thread* thread) override;
    void SetTimeout(std::uint32_t timeoutMs) override;

private:
    void RequireValid() const;

    UniqueHandle event_;
};

} // namespace ZelBase
