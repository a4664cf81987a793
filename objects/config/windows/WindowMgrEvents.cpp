#include "objects/config/windows/WindowMgrEvents.h"

#include "component/ConnectionPoint.h"

namespace tervane {
namespace {

// The event's numbers in the type library.
enum Event : DISPID { kOnWaitOnWindow = 1, kOnWaitForWindow = 2, kOnWaitForWindowToComeAndGo = 3 };

} // namespace

HRESULT Fire_OnWaitOnWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitOnWindow, {waitId, static_cast<LONG>(result)});
}

HRESULT Fire_OnWaitForWindowComplete(SinkArray& sinks, LONG waitId, WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitForWindow, {waitId, static_cast<LONG>(result)});
}

HRESULT Fire_OnWaitForWindowToComeAndGoComplete(SinkArray& sinks, LONG waitId,
                                                WaitResult result) noexcept {
    return FireEvent(sinks, kOnWaitForWindowToComeAndGo, {waitId, static_cast<LONG>(result)});
}

} // namespace tervane
