#include "component/RunTimeState.h"

#include "ZelBase/threads/CriticalSection.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>

#include <cxxabi.h>
#include <windows.h>

// Frees the memory that is set aside for exceptions in times of need. The run-time library exports
// it for leak finders, without a header.
namespace __gnu_cxx {
void __freeres();
} // namespace __gnu_cxx

// The exceptions of one thread, as "C++ ABI for Itanium: Exception Handling", 2.2.2, lays them out.
struct __cxxabiv1::__cxa_eh_globals {
    void* caughtExceptions = nullptr;
    unsigned int uncaughtExceptions = 0;
};

namespace tervane {
namespace {

using ZelBase::CriticalSectionLock;

struct ThreadExceptions : abi::__cxa_eh_globals {
    ThreadExceptions* next = nullptr;
    ThreadExceptions* previous = nullptr;
};

// So many threads may throw for the first time when memory is exhausted.
constexpr std::size_t kSpares = 16;
// The run-time library has three or four locks.
constexpr std::size_t kMostSemaphores = 16;

// Before the first constructor of all there is one thread, and no slot.
constinit DWORD slot = TLS_OUT_OF_INDEXES;
constinit ThreadExceptions ofFirstThread;

constinit std::array<HANDLE, kMostSemaphores> semaphores = {};
constinit std::atomic<std::size_t> semaphoreCount = 0;

// The exceptions of all threads that ever threw and have not ended.
class ExceptionsOfThreads {
public:
    ExceptionsOfThreads() noexcept;
    ~ExceptionsOfThreads();
    ExceptionsOfThreads(const ExceptionsOfThreads&) = delete;
    ExceptionsOfThreads& operator=(const ExceptionsOfThreads&) = delete;

    ThreadExceptions* Add() noexcept;
    void Remove(ThreadExceptions* exceptions) noexcept;
    void FreeAtExit() noexcept { isFreedAtExit_ = true; }

private:
    using List = ThreadExceptions*;

    static void Push(List& list, ThreadExceptions* exceptions) noexcept;
    static void Unlink(List& list, ThreadExceptions* exceptions) noexcept;
    void Free(ThreadExceptions* exceptions) noexcept ZELBASE_REQUIRES(lock_);
    bool IsSpare(const ThreadExceptions* exceptions) const noexcept;

    ZelBase::CriticalSection lock_;
    List used_ ZELBASE_GUARDED_BY(lock_) = nullptr;
    List unusedSpares_ ZELBASE_GUARDED_BY(lock_) = nullptr;
    std::array<ThreadExceptions, kSpares> spares_;
    bool isFreedAtExit_ = false;
};

// Made before all other static objects and destroyed after them, as those may throw.
__attribute__((init_priority(101))) ExceptionsOfThreads exceptionsOfThreads;

ExceptionsOfThreads::ExceptionsOfThreads() noexcept {
    slot = TlsAlloc();
    const CriticalSectionLock lock(lock_);
    for (ThreadExceptions& spare : spares_) {
        Push(unusedSpares_, &spare);
    }
}

ExceptionsOfThreads::~ExceptionsOfThreads() {
    if (!isFreedAtExit_) {
        return;
    }
    TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
    const CriticalSectionLock lock(lock_);
    while (ThreadExceptions* exceptions = used_) {
        used_ = exceptions->next;
        if (!IsSpare(exceptions)) {
            delete exceptions;
        }
    }
    for (std::size_t i = 0; i < semaphoreCount && i < kMostSemaphores; ++i) {
        CloseHandle(semaphores[i]);
    }
    __gnu_cxx::__freeres();
}

void ExceptionsOfThreads::Push(List& list, ThreadExceptions* exceptions) noexcept {
    exceptions->previous = nullptr;
    exceptions->next = list;
    if (list) {
        list->previous = exceptions;
    }
    list = exceptions;
}

void ExceptionsOfThreads::Unlink(List& list, ThreadExceptions* exceptions) noexcept {
    if (exceptions->next) {
        exceptions->next->previous = exceptions->previous;
    }
    (exceptions->previous ? exceptions->previous->next : list) = exceptions->next;
}

// Null when memory and spares are exhausted.
ThreadExceptions* ExceptionsOfThreads::Add() noexcept {
    auto* exceptions = new (std::nothrow) ThreadExceptions;
    const CriticalSectionLock lock(lock_);
    if (!exceptions && unusedSpares_) {
        exceptions = unusedSpares_;
        Unlink(unusedSpares_, exceptions);
        *exceptions = {};
    }
    if (exceptions) {
        Push(used_, exceptions);
    }
    return exceptions;
}

void ExceptionsOfThreads::Remove(ThreadExceptions* exceptions) noexcept {
    const CriticalSectionLock lock(lock_);
    Free(exceptions);
}

void ExceptionsOfThreads::Free(ThreadExceptions* exceptions) noexcept {
    Unlink(used_, exceptions);
    if (IsSpare(exceptions)) {
        Push(unusedSpares_, exceptions);
    } else {
        delete exceptions;
    }
}

bool ExceptionsOfThreads::IsSpare(const ThreadExceptions* exceptions) const noexcept {
    const std::less<> before;
    return !before(exceptions, spares_.data()) && before(exceptions, spares_.data() + kSpares);
}

// Never null: without a place for its exceptions a thread cannot go on.
abi::__cxa_eh_globals* ExceptionsOfThisThread() noexcept {
    if (slot == TLS_OUT_OF_INDEXES) {
        return &ofFirstThread;
    }
    // What a destructor that runs during an exception may want to ask for is left as it was.
    const DWORD lastError = GetLastError();
    auto* exceptions = static_cast<ThreadExceptions*>(TlsGetValue(slot));
    if (!exceptions) {
        exceptions = exceptionsOfThreads.Add();
        if (!exceptions || !TlsSetValue(slot, exceptions)) {
            std::abort();
        }
    }
    SetLastError(lastError);
    return exceptions;
}

// The locks of the run-time library wait on semaphores that nobody else closes.
HANDLE WINAPI CreateRememberedSemaphore(SECURITY_ATTRIBUTES* security, LONG count, LONG most,
                                        const wchar_t*) {
    HANDLE semaphore = CreateSemaphoreA(security, count, most, nullptr);
    const std::size_t index = semaphoreCount++;
    if (index < kMostSemaphores) {
        semaphores[index] = semaphore;
    }
    return semaphore;
}

} // namespace

bool HasRunTimeState() noexcept {
    return slot != TLS_OUT_OF_INDEXES;
}

void FreeRunTimeStateOfThread() noexcept {
    if (auto* exceptions = static_cast<ThreadExceptions*>(TlsGetValue(slot))) {
        TlsSetValue(slot, nullptr);
        exceptionsOfThreads.Remove(exceptions);
    }
}

void FreeRunTimeStateAtExit() noexcept {
    exceptionsOfThreads.FreeAtExit();
}

} // namespace tervane

// What std::terminate calls. The run-time library's own tells the exception's name on a console
// that no host of ours has, and brings a demangler for it that is as large as all of our classes
// for mail.
void __gnu_cxx::__verbose_terminate_handler() {
    std::abort();
}

// The two functions of the run-time library that keep state for each thread. Its own take a slot
// and memory from its emulation of thread-local variables, which it never frees.
abi::__cxa_eh_globals* abi::__cxa_get_globals() noexcept {
    return tervane::ExceptionsOfThisThread();
}

abi::__cxa_eh_globals* abi::__cxa_get_globals_fast() noexcept {
    return tervane::ExceptionsOfThisThread();
}

// What every call of the function in this library goes through, in the place of the pointer that
// the system's import library brings. None but the run-time library makes semaphores here.
#ifdef _WIN64
#define TERVANE_IMPORT_OF_CREATE_SEMAPHORE "__imp_CreateSemaphoreW"
#else
#define TERVANE_IMPORT_OF_CREATE_SEMAPHORE "__imp__CreateSemaphoreW@16"
#endif
decltype(&tervane::CreateRememberedSemaphore) importOfCreateSemaphore __asm__(
    TERVANE_IMPORT_OF_CREATE_SEMAPHORE) = &tervane::CreateRememberedSemaphore;

// What the library is linked to call when a lock of the run-time library is destroyed, which only
// the lock of the memory for exceptions ever is. Its semaphore is closed with the others: closed
// twice, its number might be another thread's new handle by then.
extern "C" void __wrap___gthr_win32_mutex_destroy(void* /*lock*/) {}
