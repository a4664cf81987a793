#include "ZelBase/threads/Thread.h"

#include "ZelBase/threads/ModulePin.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ZelBase {

std::unique_ptr<Thread> Thread::Create() {
    std::unique_ptr<Thread> thread(new (std::nothrow) WIN32_Thread);
    return thread && thread->IsValid() ? std::move(thread) : nullptr;
}

Thread::Thread() : logger_(Logger::Create()) {
    if (logger_ && logger_->IsValid()) {
        logger_->SetComponent("Thread");
        loggingEnabled_ = true;
    }
}

Thread::~Thread() = default;

namespace {

// A thread that was suspended several times goes on only when it was resumed as often.
void ResumeFully(HANDLE thread) {
    constexpr DWORD kFailed = static_cast<DWORD>(-1);
    DWORD count = 0;
    do {
        count = ResumeThread(thread);
    } while (count > 1 && count != kFailed);
}

constexpr DWORD kHardTerminateMs = 10;
// A thread that is still starting, or that is ending as it was told to, gets this much more.
constexpr DWORD kGraceMs = 2000;

} // namespace

WIN32_Thread::WIN32_Thread()
    : terminateEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      queueEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}

// The lock is not held meanwhile: a worker that ends in time needs it to say so. Only a thread that
// is running is said to be terminated: viewers took the record for a worker that had to be stopped.
WIN32_Thread::~WIN32_Thread() {
    End(true, WIN32_Thread::IsRunning());
}

bool WIN32_Thread::IsValid() const {
    return terminateEvent_ && queueEvent_ && logger_ && logger_->IsValid();
}

void WIN32_Thread::Sleep(std::uint32_t ms) {
    const bool failed = WaitForSingleObject(terminateEvent_.Get(), ms) == WAIT_FAILED;
    GuardObject guard(this);
    if (terminateRequested_ || failed) {
        AcknowledgeTermination();
        throw ThreadTerminateException();
    }
}

bool WIN32_Thread::WaitForEvent(std::string& name) {
    Trace("WaitForEvent", LogLevel::kTrace, "Waiting for Event.");
    WaitForSingleObject(queueEvent_.Get(), INFINITE);
    return TakeEvent(name, "Terminating thread because of terminate or empty queue.");
}

bool WIN32_Thread::WaitForEvent(std::string& name, std::uint32_t timeoutMs) {
    // "%ul" followed by "ms" is what viewers know these two messages by; both stay, and so does the
    // spelling of the third, which tells it from that of the wait without limit.
    Trace("WaitForEvent", LogLevel::kTrace, "Wait for an Event for %ulms.", timeoutMs);
    if (WaitForSingleObject(queueEvent_.Get(), timeoutMs) == WAIT_TIMEOUT) {
        Trace("WaitForEvent", LogLevel::kTrace, "Event did not occur in %ulms.", timeoutMs);
        return false;
    }
    return TakeEvent(name, "Terminating thread becuase of terminate or empty queue.");
}

// The queue event stays set as long as there are names, and for good once termination is requested.
bool WIN32_Thread::TakeEvent(std::string& name, const char* terminationMessage) {
    GuardObject guard(this);
    if (events_.empty() || terminateRequested_) {
        Trace("WaitForEvent", LogLevel::kTrace, terminationMessage);
        AcknowledgeTermination();
        throw ThreadTerminateException();
    }
    name = std::move(events_.front());
    events_.pop_front();
    if (events_.empty()) {
        ResetEvent(queueEvent_.Get());
    }
    Trace("WaitForEvent", LogLevel::kTrace, "Found Event %s.", name.c_str());
    return true;
}

bool WIN32_Thread::SignalEvent(const std::string& name) {
    GuardObject guard(this);
    if (!running_ || !IsValid()) {
        return false;
    }
    Trace("SignalEvent", LogLevel::kTrace, "%s was signaled.", name.c_str());
    events_.push_back(name);
    SetEvent(queueEvent_.Get());
    return true;
}

bool WIN32_Thread::GetEvent(const std::string& name) {
    GuardObject guard(this);
    if (running_ && IsValid()) {
        return false; // the names are the worker's now
    }
    const auto found = std::find(events_.begin(), events_.end(), name);
    if (found == events_.end()) {
        Trace("GetEvent", LogLevel::kTrace, "Event is not present.");
        return false;
    }
    Trace("GetEvent", LogLevel::kTrace, "Event is present.");
    events_.erase(found);
    return true;
}

bool WIN32_Thread::HasEvents() const {
    GuardObject guard(this);
    return !events_.empty();
}

void WIN32_Thread::SetTerminateTimeout(std::uint32_t ms) {
    GuardObject guard(this);
    terminateTimeoutMs_ = ms;
}

bool WIN32_Thread::SetArgument(std::uint32_t argument) {
    GuardObject guard(this);
    if (running_) {
        return false;
    }
    argument_ = argument;
    return true;
}

bool WIN32_Thread::SetThreadFunction(Function function) {
    GuardObject guard(this);
    if (running_) {
        return false;
    }
    function_ = std::move(function);
    return true;
}

bool WIN32_Thread::Execute() {
    StartResult result = StartResult::kNoThread;
    try {
        result = Start();
    } catch (const std::bad_alloc&) { // the same to the caller as a system without threads left
    }
    switch (result) {
    case StartResult::kStarted:
        Trace("Execute", LogLevel::kTrace, "Started thread Executing.");
        return true;
    case StartResult::kRefused:
        Trace("Execute", LogLevel::kWarning,
              "Could not start thread because it is already running or is not valid.");
        return false;
    case StartResult::kNoThread:
        break;
    }
    Trace("Execute", LogLevel::kError, "Failed to allocate the thread.");
    return false;
}

WIN32_Thread::StartResult WIN32_Thread::Start() {
    GuardObject guard(this);
    if (!function_ || running_ || !IsValid()) {
        return StartResult::kRefused;
    }
    auto thread = std::make_shared<UniqueHandle>();
    terminateRequested_ = false;
    if (thread_) {
        WaitForSingleObject(thread_->Get(), kGraceMs); // it may be on its last steps
        thread_.reset();
    }
    events_.clear();
    ResetEvent(queueEvent_.Get());
    ResetEvent(terminateEvent_.Get());
    eventsSet_ = false;
    running_ = true;
    finished_ = suspended_ = wasSuspended_ = false;
    phase_ = Phase::kStarting;
    *thread = ModulePin::StartThread(&ThreadWrapper, this, &threadId_);
    if (!*thread) {
        running_ = false;
        return StartResult::kNoThread;
    }
    thread_ = std::move(thread);
    return StartResult::kStarted;
}

DWORD WINAPI WIN32_Thread::ThreadWrapper(void* thread) {
    return static_cast<WIN32_Thread*>(thread)->RunRoutine();
}

// Once the thread is marked as finished, it touches nothing of the object but its logger.
std::uint32_t WIN32_Thread::RunRoutine() {
    Trace("ThreadWrapper", LogLevel::kTrace, "Started thread Executing.");
    try {
        phase_ = Phase::kInRoutine;
        const std::uint32_t result = function_(this, argument_);
        phase_ = Phase::kEnding;
        GuardObject guard(this);
        exitCode_ = result;
    } catch (const ThreadTerminateException&) {
        Trace("ThreadWrapper", LogLevel::kError,
              "Uncaught Exception Thread Termination Exception.");
    } catch (...) {
        Trace("ThreadWrapper", LogLevel::kError, "ERROR - Uncaught Exception");
    }
    std::uint32_t exitCode = 0;
    {
        GuardObject guard(this);
        running_ = false;
        terminateRequested_ = true;
        finished_ = true;
        exitCode = exitCode_;
    }
    Trace("ThreadWrapper", LogLevel::kTrace, "Thread has terminated with a code of %lu.",
          static_cast<unsigned long>(exitCode));
    return exitCode;
}

// The lock is held while the thread is halted, so that it is never halted with the lock.
bool WIN32_Thread::Suspend() {
    {
        GuardObject guard(this);
        suspended_ = wasSuspended_ = true;
        if (!IsCaller()) {
            if (thread_) {
                SuspendThread(thread_->Get());
            }
            return true;
        }
    }
    SuspendThread(GetCurrentThread());
    return true;
}

bool WIN32_Thread::Resume() {
    GuardObject guard(this);
    if (thread_) {
        ResumeThread(thread_->Get());
    }
    suspended_ = false;
    return true;
}

bool WIN32_Thread::Terminate(bool hard) {
    return End(hard, true);
}

bool WIN32_Thread::End(bool hard, bool isTraced) {
    const Run run = RequestTermination(hard, isTraced);
    if (run.isCaller) {
        return true;
    }
    if (run.thread && !WaitForEnd(run.thread->Get(), run.timeoutMs)) {
        return false;
    }
    GuardObject guard(this);
    if (terminateRequested_) { // else that run has ended and someone has executed the thread anew
        running_ = false;
        finished_ = true;
    }
    return true;
}

WIN32_Thread::Run WIN32_Thread::RequestTermination(bool hard, bool isTraced) {
    GuardObject guard(this);
    terminateRequested_ = true;
    // Whoever has ended may be told so several times.
    if (thread_ && (!finished_ || wasSuspended_)) {
        ResumeFully(thread_->Get());
    }
    suspended_ = false;
    if (isTraced) {
        Trace("Terminate", LogLevel::kTrace, "Terminating thread.");
    }
    if (!std::exchange(eventsSet_, true)) {
        SetEvent(terminateEvent_.Get());
        SetEvent(queueEvent_.Get());
    }
    return {thread_, hard ? kHardTerminateMs : terminateTimeoutMs_, IsCaller()};
}

// False when the thread had to be killed. One that is leaving after its routine is at worst left
// alone: it touches nothing of the object any more.
bool WIN32_Thread::WaitForEnd(HANDLE thread, DWORD timeoutMs) {
    DWORD result = WaitForSingleObject(thread, timeoutMs);
    for (DWORD graceMs = kGraceMs; result == WAIT_TIMEOUT && graceMs > 0;) {
        graceMs -= kHardTerminateMs;
        if (Kill(thread, graceMs == 0)) {
            return false;
        }
        result = WaitForSingleObject(thread, kHardTerminateMs);
    }
    return true;
}

// False, and nothing done, when the thread has come to its end or, unless this is the `lastTry`, is
// starting or ending. The lock is held, so that the thread does not take it along.
bool WIN32_Thread::Kill(HANDLE thread, bool lastTry) {
    GuardObject guard(this);
    const auto isSpared = [&] { return phase_ != Phase::kInRoutine && !lastTry; };
    if (finished_ || !terminateRequested_ || isSpared()) {
        return false;
    }
    Trace("Terminate", LogLevel::kError, "Hard Terminate.");
    // It may have understood meanwhile; once halted it cannot any more. Only to ask for its context
    // makes sure that it stands still.
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_CONTROL;
    SuspendThread(thread);
    GetThreadContext(thread, &context);
    if (isSpared()) {
        ResumeThread(thread);
        return false;
    }
    TerminateThread(thread, 0);
    WaitForSingleObject(thread, kGraceMs); // it dies a moment later
    exitCode_ = kKilledExitCode;
    running_ = false;
    finished_ = true;
    return true;
}

bool WIN32_Thread::IsRunning() const {
    GuardObject guard(this);
    return running_;
}

bool WIN32_Thread::IsSuspended() const {
    GuardObject guard(this);
    return suspended_;
}

bool WIN32_Thread::IsFinished() const {
    GuardObject guard(this);
    return finished_;
}

std::uint32_t WIN32_Thread::GetExitCode() const {
    GuardObject guard(this);
    return exitCode_;
}

void WIN32_Thread::Lock() const {
    section_.Lock();
}

void WIN32_Thread::Unlock() const {
    section_.Unlock();
}

// Identifiers are used again after a thread's end, hence the look at the flag.
bool WIN32_Thread::IsCaller() const {
    return running_ && threadId_ == GetCurrentThreadId();
}

} // namespace ZelBase
