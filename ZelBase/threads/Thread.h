#pragma once

// A worker thread with a queue of named events, which can be told to end.
//
// The routine blocks in WaitForEvent, Sleep, or a wait of an Event or Mutex that it gives its own
// Thread; Terminate makes each of them throw ThreadTerminateException, which unwinds the routine to
// the wrapper around it. A worker that does not wait that way is killed when its time is over. A
// thread that has come to its end can be executed again.
//
// All operations may be called from any thread, except that WaitForEvent and Sleep are for the
// worker itself. The object must outlive the routine and must not be destroyed by it; destroying it
// while the routine runs terminates the thread hard.

#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/ThreadAnnotations.h"
#include "ZelBase/threads/Timeout.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace ZelBase {

class WIN32_Thread;

class ZELBASE_LOCKABLE Thread {
public:
    // What the thread runs: gets its own Thread and the argument, returns the exit code.
    using Function = std::function<std::uint32_t(Thread* thread, std::uint32_t argument)>;
    // Exit code of a thread that had to be killed.
    static constexpr std::uint32_t kKilledExitCode = 0xFFFFFFFF;

    // Holds the lock of a thread's fields for a scope.
    class ZELBASE_SCOPED_LOCKABLE GuardObject {
    public:
        explicit GuardObject(const Thread* thread) ZELBASE_ACQUIRE(thread) : thread_(thread) {
            thread_->Lock();
        }
        ~GuardObject() ZELBASE_RELEASE() { thread_->Unlock(); }
        GuardObject(const GuardObject&) = delete;
        GuardObject& operator=(const GuardObject&) = delete;

    private:
        const Thread* thread_;
    };

    // A new thread that does not run yet; null when it cannot be made.
    static std::unique_ptr<Thread> Create();

    virtual bool IsValid() const = 0;
    // Sleeps for `ms`; throws ThreadTerminateException when the thread shall end.
    virtual void Sleep(std::uint32_t ms) = 0;
    // Takes the oldest name from the queue, waiting for one. Throws ThreadTerminateException when
    // the thread shall end, even if names are left.
    virtual bool WaitForEvent(std::string& name) = 0;
    // The same; false when no name came within `timeoutMs`.
    virtual bool WaitForEvent(std::string& name, std::uint32_t timeoutMs) = 0;
    // Queues a name; false, and nothing queued, unless the thread is running.
    virtual bool SignalEvent(const std::string& name) = 0;
    // Takes `name` out of the queue of a thread that is not running; false when it is not in there,
    // or when the thread is running.
    virtual bool GetEvent(const std::string& name) = 0;
    virtual bool HasEvents() const = 0;
    // How long Terminate(false) lets the thread go on; initially kInfinite.
    virtual void SetTerminateTimeout(std::uint32_t ms) = 0;
    // What the routine is given, and the routine; false, and nothing changed, while running.
    virtual bool SetArgument(std::uint32_t argument) = 0;
    virtual bool SetThreadFunction(Function function) = 0;
    // Starts the routine with an empty queue. False when it has none or is running already, or when
    // the system cannot make a thread.
    virtual bool Execute() = 0;
    // Halts the thread wherever it is, and lets it go on. A thread that was suspended twice must be
    // resumed twice, which Terminate does. Always true.
    virtual bool Suspend() = 0;
    virtual bool Resume() = 0;
    // Tells the thread to end and waits for it: 10 ms when `hard`, else the terminate time-out.
    // Then it is killed, unless it is only just starting, or on its way out already: that gets two
    // seconds more. True for an orderly end, false for a forced one. The thread itself may call it:
    // it then returns at once, and the next wait throws.
    virtual bool Terminate(bool hard) = 0;
    virtual bool IsRunning() const = 0;
    virtual bool IsSuspended() const = 0;
    // Whether the routine has come to its end, by itself or forced, since the last Execute.
    virtual bool IsFinished() const = 0;
    // What the routine returned last, 0 before, kKilledExitCode when it was killed.
    virtual std::uint32_t GetExitCode() const = 0;
    virtual ~Thread();
    // Guards the fields below; use GuardObject.
    virtual void Lock() const ZELBASE_ACQUIRE() = 0;
    virtual void Unlock() const ZELBASE_RELEASE() = 0;
    // The thread as one that the system's waits can be tied to; null when it is of another kind.
    virtual WIN32_Thread* AsWin32Thread() noexcept { return nullptr; }

protected:
    Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Logs unless there is no logger.
    template <typename... Arguments>
    void Trace(const char* function, LogLevel level, const char* format,
               Arguments... arguments) const {
        if (!loggingEnabled_) {
            return;
        }
        if constexpr (sizeof...(arguments) == 0) {
            logger_->Log(function, level, "%s", format);
        } else {
            logger_->Log(function, level, format, arguments...);
        }
    }

    Function function_;
    bool terminateRequested_ ZELBASE_GUARDED_BY(this) = false;
    bool suspended_ ZELBASE_GUARDED_BY(this) = false;
    std::uint32_t argument_ = 0;
    bool running_ ZELBASE_GUARDED_BY(this) = false;
    bool finished_ ZELBASE_GUARDED_BY(this) = false;
    std::uint32_t exitCode_ ZELBASE_GUARDED_BY(this) = 0;
    std::uint32_t terminateTimeoutMs_ ZELBASE_GUARDED_BY(this) = kInfinite;
    std::list<std::string> events_ ZELBASE_GUARDED_BY(this);
    std::unique_ptr<Logger> logger_;
    // Switched on for good once the logger is known to work.
    bool loggingEnabled_ = false;
};

} // namespace ZelBase
