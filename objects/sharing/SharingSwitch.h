#pragma once

// The sharing of this machine's files and printers with others, seen as one switch that can be
// turned off. What it is behind the switch differs: a service on the NT family, bindings of network
// components on the 9x family. Results are Windows error codes, 0 for success.

#include "platform/PlatformFamily.h"

#include <windows.h>

#include <memory>

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

} // namespace tervane
