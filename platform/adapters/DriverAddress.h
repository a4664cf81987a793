#pragma once

// The hardware addresses of adapters of the NT family, asked from their drivers. Nothing needs to
// be bound to an adapter for that, and nothing is sent.

#include "platform/adapters/NetworkDevices.h"

#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// One for each list of adapters that is made, on the thread that makes it.
class DriverAddresses {
public:
    // `api` must outlive this object.
    explicit DriverAddresses(const DeviceApi& api = DeviceApi::System()) noexcept : api_(api) {}

    // `device` is the name of the adapter's device: its instance identifier, or on NT 4 its
    // service. nullopt when there is no such device or its driver does not answer with six bytes,
    // and when another thread's driver keeps everybody waiting for more than five seconds; after
    // that none is asked any more, so that a list waits once at most. Defines a name for a device
    // that has none and takes it back.
    std::optional<std::wstring> Read(std::wstring_view device);

private:
    const DeviceApi& api_;
    bool hasWaitedInVain_ = false;
};

} // namespace tervane
