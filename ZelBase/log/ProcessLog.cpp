#include "ZelBase/log/ProcessLog.h"

#include "ZelBase/threads/ModulePin.h"

namespace ZelBase {
namespace {

// How long the mutex is waited for: by threads of our own, and by those of the host, which may be
// running a script that no other process shall hold up. Theirs wait only as long as a writer may
// take that has just lost the processor.
constexpr DWORD kPatienceMs = 1000;
constexpr DWORD kHostPatienceMs = 50;
// How long a ring that somebody keeps locked is left alone.
constexpr DWORD kRetryMs = 10000;

class Rings {
public:
    constexpr Rings() noexcept = default;
    ~Rings();

    bool AddUser() noexcept;
    void RemoveUser() noexcept;
    // For users only.
    void Open() noexcept;
    LogRing* Current() const noexcept;
    void Write(const LogRecord& head, LogRing::Texts texts) noexcept;

private:
    HANDLE Gate() noexcept;
    bool OpenShared(DWORD patienceMs) noexcept;
    bool MayTryAgain() noexcept;

    // Changes the count, if it is at least `least`.
    bool ChangeFrom(unsigned least, int step) noexcept;

    // Held while the count leaves zero or comes back to it; between other numbers it just changes.
    // A mutex of the system, because a thread that is killed with it must not lock out the others;
    // what it guards is right after every single step. It stays until the module goes.
    std::atomic<HANDLE> gate_ = nullptr;
    std::atomic<unsigned> users_ = 0;
    // Each is put in place once and taken out by the last user. The process's own stays when the
    // shared one has come at last, because somebody may be writing to it.
    std::atomic<LogRing*> shared_ = nullptr;
    std::atomic<LogRing*> own_ = nullptr;
    // Somebody has kept the shared ring locked; the tick from which on it may be tried again.
    std::atomic<bool> wasLocked_ = false;
    std::atomic<DWORD> nextTry_ = 0;
};

// Ready before any code runs, and emptied when the module goes, whoever still counts as a user.
constinit Rings rings;

void Publish(std::atomic<LogRing*>& place, std::unique_ptr<LogRing> ring) noexcept {
    LogRing* none = nullptr;
    if (place.compare_exchange_strong(none, ring.get())) {
        static_cast<void>(ring.release());
    } // else another thread was faster
}

Rings::~Rings() {
    delete shared_.exchange(nullptr);
    delete own_.exchange(nullptr);
    const UniqueHandle gate(gate_.exchange(nullptr));
}

HANDLE Rings::Gate() noexcept {
    HANDLE gate = gate_;
    if (!gate) {
        UniqueHandle made(CreateMutexA(nullptr, FALSE, nullptr));
        if (gate_.compare_exchange_strong(gate, made.Get())) {
            gate = made.Release();
        }
    }
    return gate;
}

bool Rings::ChangeFrom(unsigned least, int step) noexcept {
    unsigned users = users_;
    while (users >= least) {
        if (users_.compare_exchange_weak(users, users + static_cast<unsigned>(step))) {
            return true;
        }
    }
    return false;
}

bool Rings::AddUser() noexcept {
    if (ChangeFrom(1, 1)) {
        return true;
    }
    const HANDLE gate = Gate();
    if (!gate) {
        return false;
    }
    WaitForSingleObject(gate, INFINITE);
    ++users_;
    ReleaseMutex(gate);
    return true;
}

void Rings::RemoveUser() noexcept {
    if (ChangeFrom(2, -1)) {
        return;
    }
    const HANDLE gate = gate_;
    if (!gate) {
        return; // the module is going
    }
    std::unique_ptr<LogRing> shared;
    std::unique_ptr<LogRing> own;
    WaitForSingleObject(gate, INFINITE);
    if (--users_ == 0) {
        shared.reset(shared_.exchange(nullptr));
        own.reset(own_.exchange(nullptr));
    }
    ReleaseMutex(gate);
    if (shared && shared->IsStuck()) { // so that the next opening does not wait for it again
        nextTry_ = GetTickCount();
        wasLocked_ = true;
    }
}

void Rings::Open() noexcept {
    if (Current()) {
        return;
    }
    const bool isShared = wasLocked_ ? MayTryAgain() && OpenShared(0)
                                     : OpenShared(ModulePin::IsOwnThread() ? kPatienceMs : 0);
    if (!isShared) {
        std::unique_ptr<LogRing> ring;
        LogRing::Open(LogRing::Place::kProcess, 0, ring);
        Publish(own_, std::move(ring));
    }
}

bool Rings::OpenShared(DWORD patienceMs) noexcept {
    std::unique_ptr<LogRing> ring;
    const LogRing::Result result = LogRing::OpenShared(patienceMs, ring);
    if (result == LogRing::Result::kOpened) {
        Publish(shared_, std::move(ring));
    }
    nextTry_ = GetTickCount() + kRetryMs;
    wasLocked_ = result == LogRing::Result::kLocked;
    return result == LogRing::Result::kOpened;
}

// True for one thread at a time.
bool Rings::MayTryAgain() noexcept {
    const DWORD now = GetTickCount();
    DWORD next = nextTry_;
    return static_cast<LONG>(now - next) >= 0 &&
           nextTry_.compare_exchange_strong(next, now + kRetryMs);
}

LogRing* Rings::Current() const noexcept {
    LogRing* const shared = shared_;
    return shared ? shared : own_.load();
}

void Rings::Write(const LogRecord& head, LogRing::Texts texts) noexcept {
    if (wasLocked_ && !shared_ && MayTryAgain()) {
        OpenShared(0);
    }
    if (LogRing* const ring = Current()) {
        ring->Write(head, texts, ModulePin::IsOwnThread() ? kPatienceMs : kHostPatienceMs);
    }
}

} // namespace

ProcessLog::ProcessLog() noexcept : counted_(rings.AddUser()) {
    if (counted_) {
        rings.Open();
    }
}

ProcessLog::~ProcessLog() {
    if (counted_) {
        rings.RemoveUser();
    }
}

bool ProcessLog::IsValid() const noexcept {
    return counted_ && rings.Current();
}

void ProcessLog::Write(const LogRecord& head, LogRing::Texts texts) noexcept {
    if (counted_) {
        rings.Write(head, texts);
    }
}

} // namespace ZelBase
