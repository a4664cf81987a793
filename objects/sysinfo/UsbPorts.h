#pragma once

// How many USB ports the machine has, those of hubs that are plugged into others included, and how
// many of them are in use.

#include "objects/sysinfo/UsbApi.h"
#include "platform/PlatformFamily.h"

#include <string>

namespace tervane {

struct UsbPorts {
    long ports = 0;
    // With a working device.
    long connected = 0;
};

// Asks the first ten host controllers and every hub below them; a hub or port that does not answer
// is left out. nullopt on Windows 95 and NT 4, whose USB drivers, if any, cannot be asked. Each
// port is noted in the log. Any thread; throws std::bad_alloc.
std::optional<UsbPorts> CountUsbPorts(PlatformFamily family, const UsbApi& api = UsbApi::System());

// What the log says of a port: "[Port2] DeviceConnected :  RootHub".
std::string UsbPortText(unsigned port, unsigned long connectionStatus, const std::string& hub);

} // namespace tervane
