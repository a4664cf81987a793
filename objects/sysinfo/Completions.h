#pragma once

// The ends of an object's workers, on their way to the object's own thread. Each carries a
// reference, so that the object lives until its event has been fired. Workers share this with the
// object: posting an end may be the last moment at which the object is sure to live.

#include "ZelBase/LocalMutex.h"
#include "component/PostbackWindow.h"
#include "platform/Automation.h"

#include <vector>

namespace tervane {

class Completions {
public:
    // Puts the end of a worker on its way; the owner of the window calls Take for code 0. `object`
    // is released here when nothing can be posted: its thread is gone, and the event is lost. On
    // the worker's thread; `window` belongs to `object`.
    void Post(const PostbackWindow& window, ComPtr<IUnknown> object) noexcept;
    // One of them, null when there is none.
    ComPtr<IUnknown> Take() noexcept;

private:
    ZelBase::LocalMutex mutex_;
    std::vector<ComPtr<IUnknown>> waiting_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace tervane
