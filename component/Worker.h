#pragma once

// The worker thread of an asynchronous method: a COM apartment of its own, a reference that keeps
// the object alive until the work has fired its event, and the library pinned until the thread's
// last instruction.

#include "platform/ComValues.h"

#include <functional>

namespace tervane {

struct WorkerRequest {
    // Released on the worker thread, after the work.
    ComPtr<IUnknown> object;
    // The copies of the call's arguments, and what is done with them; it fires the completion
    // event itself. Destroyed after the object is released.
    std::function<void()> work;
    // Called on the worker thread before and, when everything else is gone, after the work: layers
    // that the work stands on. Either may be empty.
    std::function<void()> enter;
    std::function<void()> leave;
    // Whether the thread's apartment is given up at its end.
    bool uninitializeCom = true;
};

// Starts a worker and returns at once; nothing records that it runs, so each call has its own.
// An exception out of the work ends the work only. False when no thread could be started; then
// nothing was called. Throws std::bad_alloc.
bool StartWorker(WorkerRequest request);

} // namespace tervane
