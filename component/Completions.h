#pragma once

// The ends of an object's workers, on their way to the object's own thread. Each carries a
// reference, so that the object lives until its event has been fired. Workers share this with the
// object: posting an end may be the last moment at which the object is sure to live.
//
// What has been posted to a thread that ends without taking it is lost without a word, and with it
// the reference. So one worker stays, as long as ends are on their way, and gives them back when
// the object's thread has ended.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/LocalMutex.h"
#include "component/PostbackWindow.h"
#include "platform/ComValues.h"

#include <list>

namespace tervane {

class Completions {
public:
    // One end: a list with its object, made in advance because it must arrive whatever happens.
    using End = std::list<ComPtr<IUnknown>>;

    // On the object's thread.
    Completions() noexcept;

    // Puts the end of a worker on its way; the owner of the window calls Take for code 0. The
    // object is released here when nothing can be posted, or when its thread ends before it takes
    // it: the event is lost. On the worker's thread, which may stay here until then, dispatching
    // messages; `window` belongs to the object.
    void Post(const PostbackWindow& window, End end) noexcept;
    // One of them, null when there is none.
    ComPtr<IUnknown> Take() noexcept;

private:
    // Whether this worker is to stay.
    bool BeginWatch() ZELBASE_REQUIRES(mutex_);
    // False while ends are on their way.
    bool EndWatch() noexcept;
    void GiveBack() noexcept;

    // Null when there is none to have; then nobody stays.
    const ZelBase::UniqueHandle thread_;
    // Set while no end is on its way.
    const ZelBase::UniqueHandle allTaken_;
    ZelBase::LocalMutex mutex_;
    End waiting_ ZELBASE_GUARDED_BY(mutex_);
    bool isWatched_ ZELBASE_GUARDED_BY(mutex_) = false;
};

} // namespace tervane
