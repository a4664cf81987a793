#include "ZelBase/threads/WIN32_ThreadWait.h"

#include "ZelBase/threads/Thread.h"

namespace ZelBase {
namespace {

TiedWait WaitUntied(HANDLE object, std::uint32_t timeoutMs) noexcept {
    switch (WaitForSingleObject(object, timeoutMs)) {
    case WAIT_OBJECT_0:
        return TiedWait::kAcquired;
    case WAIT_ABANDONED:
        return TiedWait::kAbandoned;
    default:
        return TiedWait::kTimedOut;
    }
}

} // namespace

TiedWait WaitTiedToThread(HANDLE object, std::uint32_t timeoutMs, Thread* thread) {
    if (!thread) {
        return WaitUntied(object, timeoutMs);
    }
    WIN32_Thread* win32Thread = thread->AsWin32Thread();
    if (!win32Thread) {
        throw ThreadTerminateException();
    }
    // The object comes first: when both are signalled, the wait has succeeded.
    const HANDLE handles[] = {object, win32Thread->TerminateEvent()};
    switch (WaitForMultipleObjects(2, handles, FALSE, timeoutMs)) {
    case WAIT_OBJECT_0:
        return TiedWait::kAcquired;
    case WAIT_ABANDONED_0:
        return TiedWait::kAbandoned;
    case WAIT_TIMEOUT:
        return TiedWait::kTimedOut;
    default:
        win32Thread->AcknowledgeTermination();
        throw ThreadTerminateException();
    }
}

} // namespace ZelBase
