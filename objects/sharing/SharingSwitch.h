#pragma once

// The sharing of this machine's files and printers with others, seen as one switch that can be
// turned off. What it is behind the switch differs: a service on the NT family, bindings of network
// components on the 9x family. Results are Windows error codes, 0 for success.

#include "objects/sharing/WindowsService.h"
#include "platform/PlatformFamily.h"
#include "platform/registry/RegistryKey.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace tervane {

class SharingSwitch {
public:
    virtual ~SharingSwitch() = default;

    virtual DWORD IsOn(bool& on) const = 0;

    // Turns it off; a switch that is off already is not touched. On success `rebootNeeded` tells
    // whether it goes off only with the next start of the system; on failure nothing has changed.
    virtual DWORD TurnOff(bool& rebootNeeded) const = 0;

    // Null for a system that is neither of the families.
    static std::unique_ptr<SharingSwitch> For(PlatformFamily family);
};

// Sharing on the 9x family: the network components "VSERVER" (for Microsoft networks) and
// "NWSERVER" (for NetWare networks). A component shares over the protocols whose "Bindings" key
// names it; without a binding it is idle. The system reads the bindings when it starts.
class SharingBindings final : public SharingSwitch {
public:
    explicit SharingBindings(const RegistryApi& api = RegistryApi::System()) : api_(api) {}

    DWORD IsOn(bool& on) const override;
    // Always needs a reboot when there was anything to remove.
    DWORD TurnOff(bool& rebootNeeded) const override;

private:
    struct Binding {
        std::wstring path; // of the protocol's bindings
        std::wstring name;
        std::wstring text;
    };

    std::vector<Binding> Find() const;
    bool Remove(const Binding& binding) const;
    void Restore(const Binding& binding) const;

    const RegistryApi& api_;
};

// Sharing on the NT family: the server service. It shares when it runs or starts by itself; it is
// turned off by being disabled, so that nothing starts it again, and then stopped along with the
// services that depend on it.
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
