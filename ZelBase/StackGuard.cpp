// The value that the compiler puts between the texts and the return address of a function, and what
// it calls when that was written over.
//
// The run-time library brings the same, but takes the value from a provider of cryptography, for
// which two more libraries are loaded while ours is: most of the time that loading it took.

#include <cstdint>

#include <windows.h>

namespace {

constexpr unsigned kStackGuardFailed = 2; // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE

// Ends the process at once, past all handlers of exceptions, which may lie in what was written
// over. Windows before 8 takes the interrupt for an access violation, which hosts of scripts catch.
[[noreturn]] void EndProcess() noexcept {
    if (IsProcessorFeaturePresent(PF_FASTFAIL_AVAILABLE)) {
        __asm__ volatile("int $0x29" : : "c"(kStackGuardFailed));
    }
    TerminateProcess(GetCurrentProcess(), STATUS_STACK_BUFFER_OVERRUN);
    __builtin_trap();
}

std::uintptr_t RandomNumber() noexcept {
    std::uintptr_t number = 0;
    // RtlGenRandom; Windows 2000 need not have it.
    using GenerateRandom = BOOLEAN(WINAPI*)(void* buffer, ULONG size);
    const HMODULE library = GetModuleHandleA("advapi32.dll");
    const auto generate = library ? reinterpret_cast<GenerateRandom>(reinterpret_cast<void*>(
                                        GetProcAddress(library, "SystemFunction036")))
                                  : nullptr;
    if (generate && generate(&number, sizeof number) && number != 0) {
        return number;
    }
    // What the system's own compilers take.
    LARGE_INTEGER ticks = {};
    QueryPerformanceCounter(&ticks);
    FILETIME time = {};
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::uintptr_t>(ticks.QuadPart) ^ time.dwLowDateTime ^
           (std::uintptr_t{GetCurrentProcessId()} << 16) ^ GetCurrentThreadId() ^
           reinterpret_cast<std::uintptr_t>(&ticks);
}

} // namespace

// By the names that the compiler and the checked string functions know.
extern "C" {

std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
    EndProcess();
}

[[noreturn]] void __stack_chk_fail_local() {
    EndProcess();
}

// Declared by the system's headers, in this way.
__attribute__((noreturn)) void __chk_fail() {
    EndProcess();
}

// Before everything else that is constructed. No function that has begun with one value may end
// with another: this one must not look at it.
__attribute__((constructor(101), no_stack_protector)) void SetStackGuard() {
    __stack_chk_guard = RandomNumber();
}
}
