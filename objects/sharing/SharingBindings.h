#pragma once

// Sharing on the 9x family: the network components "VSERVER" (for Microsoft networks) and
// "NWSERVER" (for NetWare networks). A component shares over the protocols whose "Bindings" key
// names it; without a binding it is idle. The system reads the bindings when it starts.

#include "objects/sharing/SharingSwitch.h"
#include "platform/registry/RegistryApi.h"

#include <string>
#include <vector>

namespace tervane {

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

} // namespace tervane
