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

#include "ZelBase/Handles.h"
#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/CriticalSection.h"
#include "ZelBase/threads/ThreadAnnotations.h"
#include "ZelBase/threads/Timeout.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace ZelBase {

// Thrown by value out of a blocking operation when the thread that waits has been told to end, and
// when a primitive cannot do what the caller relies on. It unwinds a worker's stack to the wrapper
// around its routine, so that no worker ever polls a stop flag: it only gives its own Thread to
// every wait.
class ThreadTerminateException {};

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
    // In this run, so that it may still be halted at its last steps.
    bool wasSuspended_ ZELBASE_GUARDED_BY(this) = false;
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

class WIN32_Thread final : public Thread {
public:
    WIN32_Thread();
    ~WIN32_Thread() override;

    bool IsValid() const override;
    void Sleep(std::uint32_t ms) override;
    bool WaitForEvent(std::string& name) override;
    bool WaitForEvent(std::string& name, std::uint32_t timeoutMs) override;
    bool SignalEvent(const std::string& name) override;
    bool GetEvent(const std::string& name) override;
    bool HasEvents() const override;
    void SetTerminateTimeout(std::uint32_t ms) override;
    bool SetArgument(std::uint32_t argument) override;
    bool SetThreadFunction(Function function) override;
    bool Execute() override;
    bool Suspend() override;
    bool Resume() override;
    bool Terminate(bool hard) override;
    bool IsRunning() const override;
    bool IsSuspended() const override;
    bool IsFinished() const override;
    std::uint32_t GetExitCode() const override;
    void Lock() const override ZELBASE_ACQUIRE();
    void Unlock() const override ZELBASE_RELEASE();
    WIN32_Thread* AsWin32Thread() noexcept override { return this; }

    // Signalled from the request to terminate until the next Execute; null in an invalid thread.
    // For waits that shall end with the thread, see WaitTiedToThread.
    HANDLE TerminateEvent() const noexcept { return terminateEvent_.Get(); }

    // Says, before throwing ThreadTerminateException on this thread, that it has understood.
    void AcknowledgeTermination() noexcept { phase_ = Phase::kEnding; }

private:
    // How far a run has come. While it starts and ends, a thread holds locks of the system (its
    // loader's, its heap's), so that to kill it there may leave the whole process standing still.
    enum class Phase { kStarting, kInRoutine, kEnding };
    enum class StartResult { kStarted, kRefused, kNoThread };
    // Shared with those who wait for the thread's end, so that Execute may put a new one in place.
    using SharedHandle = std::shared_ptr<const UniqueHandle>;
    // The run that Terminate ends.
    struct Run {
        SharedHandle thread;
        std::uint32_t timeoutMs;
        bool isCaller;
    };

    static DWORD WINAPI ThreadWrapper(void* thread);
    std::uint32_t RunRoutine();
    StartResult Start();
    bool End(bool hard, bool isTraced);
    Run RequestTermination(bool hard, bool isTraced);
    bool WaitForEnd(HANDLE thread, DWORD timeoutMs);
    bool Kill(HANDLE thread, bool lastTry);
    bool TakeEvent(std::string& name, const char* terminationMessage);
    bool IsCaller() const ZELBASE_REQUIRES(this);

    SharedHandle thread_ ZELBASE_GUARDED_BY(this);
    UniqueHandle terminateEvent_;
    UniqueHandle queueEvent_;
    // Both are set for good: termination has been requested since the last Execute.
    bool eventsSet_ ZELBASE_GUARDED_BY(this) = false;
    mutable CriticalSection section_;
    DWORD threadId_ ZELBASE_GUARDED_BY(this) = 0;
    std::atomic<Phase> phase_ = Phase::kEnding;
};

} // namespace ZelBase
