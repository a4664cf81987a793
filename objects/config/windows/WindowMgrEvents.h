#pragma once

// The events of the window manager. They are fired on wait threads, which hold on to the sinks and
// not to the object.

#include "component/SinkArray.h"
#include "objects/config/windows/WaitTask.h"

namespace tervane {

// Each calls every sink on this thread; the result is the last sink's.
HRESULT Fire_OnWaitOnWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept;
HRESULT Fire_OnWaitForWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept;
HRESULT Fire_OnWaitForWindowToComeAndGoComplete(SinkArray& sinks, LONG waitId,
                                                WaitResult result) noexcept;

} // namespace tervane
