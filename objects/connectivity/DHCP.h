#pragma once

// Release and renew for scripts: each call starts a worker of its own and returns; an event, fired
// on the worker's thread, tells how many adapters have come back with a usable address.

#include "component/Automation.h"
#include "component/ConnectionPoint.h"

#include <TERVANELib.h>

namespace tervane {

class DHCP final : public AutomationObject<IDHCP, EventSource> {
public:
    DHCP(const ClassRow& row, IUnknown* outer) : Object(row, outer) {}

    HRESULT STDMETHODCALLTYPE ReleaseRenew() override;

private:
    HRESULT Fire_OnReleaseRenewComplete(LONG adapters) const;
};

} // namespace tervane
