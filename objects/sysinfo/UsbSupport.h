#pragma once

// Whether the machine has USB at all.

#include "objects/sysinfo/UsbApi.h"
#include "platform/PlatformFamily.h"

namespace tervane {

// Where ports can be counted, a machine with `ports` above 0 has USB. Windows 95 and NT 4 are asked
// instead whether they know a device of the class "USB": the one through the driver of its device
// manager or, without that driver, in the registry's list of devices; the other in that list only.
// Any thread; throws std::bad_alloc.
bool IsUsbSupported(PlatformFamily family, long ports, const UsbApi& api = UsbApi::System());

} // namespace tervane
