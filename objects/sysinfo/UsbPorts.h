#pragma once

// How many USB ports the machine has, those of hubs that are plugged into others included, and how
// many of them are in use.

#include "platform/PlatformFamily.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tervane {

// The drivers of the USB host controllers and hubs. Tests put hubs of their own here; few test
// machines have any.
class UsbDevice {
public:
    virtual ~UsbDevice() = default;
    // Hands `buffer` to the driver, which answers in it. The number of bytes of the answer, never
    // more than the buffer has; nullopt when the driver refuses.
    virtual std::optional<std::size_t> Ask(unsigned long controlCode,
                                           std::span<unsigned char> buffer) = 0;
};

class UsbApi {
public:
    // The system's.
    static const UsbApi& System();

    virtual ~UsbApi() = default;
    // Opens a device by its path, such as "\\.\HCD0"; null when there is none.
    virtual std::unique_ptr<UsbDevice> Open(const std::string& path) const = 0;
};

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

// Whether the machine has USB at all.

// Where ports can be counted, a machine with `ports` above 0 has USB. Windows 95 and NT 4 are asked
// instead whether they know a device of the class "USB": the one through the driver of its device
// manager or, without that driver, in the registry's list of devices; the other in that list only.
// Any thread; throws std::bad_alloc.
bool IsUsbSupported(PlatformFamily family, long ports, const UsbApi& api = UsbApi::System());

} // namespace tervane
