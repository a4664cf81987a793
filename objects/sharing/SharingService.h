#pragma once

// Sharing on the NT family: the server service. It shares when it runs or starts by itself; it is
// turned off by being disabled, so that nothing starts it again, and then stopped along with the
// services that depend on it.

#include "objects/sharing/SharingSwitch.h"
#include "objects/sharing/WindowsService.h"

namespace tervane {

class SharingService final : public SharingSwitch {
public:
    explicit SharingService(const ServiceApi& api = ServiceApi::System())
        : service_(L"LanmanServer", api) {}

    DWORD IsOn(bool& on) const override;
    // A service that is disabled but does not stop in time goes with the next start of the system.
    DWORD TurnOff(bool& rebootNeeded) const override;

private:
    WindowsService service_;
};

} // namespace tervane
