#pragma once

// The drivers of the USB host controllers and hubs. Tests put hubs of their own here; few test
// machines have any.

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tervane {

class UsbDevice {
public:
    virtual ~UsbDevice() = default;
    // Hands `buffer` to the driver, which answers in it. The number of bytes of the answer, never
    // more than the buffer has; nullopt when the driver refuses.
    virtual std::optional<size_t> Ask(unsigned long controlCode,
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

} // namespace tervane
