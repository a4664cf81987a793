#include "objects/sysinfo/processor/FaultBarrier.h"

#include "ZelBase/threads/ModulePin.h"
#include "ZelBase/threads/ThreadMark.h"

namespace tervane {
namespace {

ZelBase::ThreadMark guarded;

[[noreturn]] void EndThread() noexcept {
    ZelBase::ModulePin::EndThisThread(0);
}

bool IsFault(DWORD code) noexcept {
    // The system's own errors; exceptions of languages carry the customer bit as well.
    return (code >> 28) == 0xC;
}

// Sets the thread on as if the faulting instruction had called EndThread.
void Redirect(CONTEXT& context) noexcept {
#ifdef _WIN64
    context.Rip = reinterpret_cast<DWORD64>(&EndThread);
    // Below the red zone, aligned as on the entry of a function.
    context.Rsp = ((context.Rsp - 128) & ~DWORD64{15}) - 8;
#else
    context.Eip = reinterpret_cast<DWORD>(&EndThread);
    context.Esp = ((context.Esp - 128) & ~DWORD{15}) - 4;
#endif
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) noexcept {
    if (!IsFault(exception->ExceptionRecord->ExceptionCode) || !guarded.IsSet()) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    Redirect(*exception->ContextRecord);
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

FaultBarrier::FaultBarrier() noexcept {
    using Add = decltype(&AddVectoredExceptionHandler);
    if (const auto add = kernel_.Find<Add>("AddVectoredExceptionHandler")) {
        handler_ = add(1, &OnException);
    }
}

FaultBarrier::~FaultBarrier() {
    if (handler_) {
        using Remove = decltype(&RemoveVectoredExceptionHandler);
        kernel_.Find<Remove>("RemoveVectoredExceptionHandler")(handler_);
    }
}

void FaultBarrier::GuardThisThread() noexcept {
    guarded.Set();
}

} // namespace tervane
