#include "ZelBase/threads/ModulePin.h"

#include "ZelBase/SystemLibrary.h"
#include "ZelBase/threads/ThreadMark.h"

#include <new>

#include <process.h>

namespace ZelBase {
namespace {

ThreadMark ownThread;

} // namespace

struct ModulePin::StartRecord {
    ModulePin pin;
    Routine routine;
    void* argument;
};

ModulePin::ModulePin() noexcept
    : module_(ReferenceModuleOf(reinterpret_cast<const void*>(&ModulePin::Run))) {}

UniqueHandle ModulePin::StartThread(Routine routine, void* argument, DWORD* threadId) noexcept {
    std::unique_ptr<StartRecord> record(new (std::nothrow)
                                            StartRecord{ModulePin(), routine, argument});
    if (!record || !record->pin) {
        return UniqueHandle();
    }
    // The C run-time library's way, so that its per-thread state exists from the start.
    unsigned id = 0;
    UniqueHandle thread(reinterpret_cast<HANDLE>(
        _beginthreadex(nullptr, 0, &ModulePin::Run, record.get(), 0, &id)));
    if (thread) {
        static_cast<void>(record.release()); // the thread's now
        if (threadId) {
            *threadId = id;
        }
    }
    return thread;
}

// Everything that needs destroying is gone before the last line: nothing of this function runs
// after it, and the module may be unmapped by it. The run-time library frees its per-thread state
// when the system tells it that the thread ends.
unsigned __stdcall ModulePin::Run(void* startRecord) noexcept {
    auto* record = static_cast<StartRecord*>(startRecord);
    const Routine routine = record->routine;
    void* argument = record->argument;
    HMODULE module = record->pin.module_.Release();
    delete record;
    ownThread.Set();
    FreeLibraryAndExitThread(module, RunRoutine(routine, argument));
}

void ModulePin::EndThisThread(DWORD exitCode) noexcept {
    // The reference that is taken here is given back at once: the one that counts is the thread's.
    const HMODULE module = ModulePin().module_.Get();
    FreeLibraryAndExitThread(module, exitCode);
}

bool ModulePin::IsOwnThread() noexcept {
    return ownThread.IsSet();
}

DWORD ModulePin::RunRoutine(Routine routine, void* argument) noexcept {
    try {
        return routine(argument);
    } catch (...) {
        return kEscapedException;
    }
}

} // namespace ZelBase
