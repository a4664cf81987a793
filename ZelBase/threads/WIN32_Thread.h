#pragma once

#include "ZelBase/Handles.h"
#include "ZelBase/threads/CriticalSection.h"
#include "ZelBase/threads/Thread.h"

#include <atomic>

namespace ZelBase {

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
    mutable CriticalSection section_;
    DWORD threadId_ ZELBASE_GUARDED_BY(this) = 0;
    std::atomic<Phase> phase_ = Phase::kEnding;
};

} // namespace ZelBase
