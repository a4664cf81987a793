#pragma once

// A thread must never run code of a library that has been unloaded. Its starter takes a reference
// on the module that holds this code before the thread exists, and the thread gives it back with
// the one call that both releases a library and ends the thread, as its very last act. Every thread
// of the system is started here.
//
// A thread that is killed with TerminateThread keeps its reference: the library then stays loaded,
// which is the safe side.

#include "ZelBase/Handles.h"

#include <memory>
#include <type_traits>
#include <utility>

namespace ZelBase {

class ModulePin {
public:
    // What a thread runs. An exception that escapes it ends the thread with kEscapedException.
    using Routine = DWORD(WINAPI*)(void* argument);
    static constexpr DWORD kEscapedException = 0xFFFFFFFF;

    // Pins the module that this code is linked into; check the result with operator bool.
    ModulePin() noexcept;
    explicit operator bool() const noexcept { return static_cast<bool>(module_); }

    // Starts a thread with the default stack; its identifier goes to `threadId` if that is given.
    // The caller owns the handle, and may close it while the thread runs; a null handle means that
    // no thread was made and `argument` is still the caller's.
    static UniqueHandle StartThread(Routine routine, void* argument,
                                    DWORD* threadId = nullptr) noexcept;

    // The same for a callable without parameters, which is moved to the heap and destroyed on the
    // new thread (here, when no thread can be made). It returns the exit code, or void for code 0.
    // Throws std::bad_alloc.
    template <typename Body>
    requires std::is_invocable_v<Body&>
    static UniqueHandle StartThread(Body body) {
        auto owner = std::make_unique<Body>(std::move(body));
        UniqueHandle thread = StartThread(&RunBody<Body>, owner.get());
        if (thread) {
            static_cast<void>(owner.release()); // the thread's now
        }
        return thread;
    }

    // Ends the calling thread, which was started here, as it stands: what its routine has in hand
    // stays so, but the library is given back.
    [[noreturn]] static void EndThisThread(DWORD exitCode) noexcept;

    // Whether the calling thread was started here. Any other one is the host's: a script may be
    // waiting for what it does.
    static bool IsOwnThread() noexcept;

private:
    struct StartRecord;

    static unsigned __stdcall Run(void* startRecord) noexcept;
    static DWORD RunRoutine(Routine routine, void* argument) noexcept;

    template <typename Body>
    static DWORD WINAPI RunBody(void* argument) {
        std::unique_ptr<Body> body(static_cast<Body*>(argument));
        if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
            (*body)();
            return 0;
        } else {
            return static_cast<DWORD>((*body)());
        }
    }

    UniqueLibrary module_;
};

} // namespace ZelBase
