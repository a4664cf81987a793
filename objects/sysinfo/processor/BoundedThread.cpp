#include "objects/sysinfo/processor/BoundedThread.h"

#include "ZelBase/threads/ModulePin.h"
#include "component/ComEdge.h"
#include "platform/text/MatchingLock.h"

#include <memory>

namespace tervane {
namespace {

DWORD WINAPI Run(void* parameter) {
    Contained(*static_cast<std::function<void()>*>(parameter)); // else nothing has been written
    return 0;
}

} // namespace

BoundedEnd RunBounded(std::function<void()> work, DWORD milliseconds) {
    auto body = std::make_unique<std::function<void()>>(std::move(work));
    const auto thread = ZelBase::ModulePin::StartThread(&Run, body.get());
    if (!thread) {
        return BoundedEnd::kNotStarted;
    }
    if (WaitForSingleObject(thread.Get(), milliseconds) == WAIT_OBJECT_0) {
        return BoundedEnd::kEnded;
    }
    ThreadKiller().Kill(thread.Get());
    // The thread may have been in the midst of changing it.
    static_cast<void>(body.release());
    return BoundedEnd::kTimedOut;
}

} // namespace tervane
