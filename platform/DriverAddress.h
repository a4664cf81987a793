#pragma once

// The hardware address of an adapter of the NT family, asked from its driver. Nothing needs to be
// bound to the adapter for that, and nothing is sent.

#include "platform/DeviceApi.h"

#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// `device` is the name of the adapter's device: its instance identifier, or on NT 4 its service.
// nullopt when there is no such device or its driver does not answer with six bytes, and while
// another thread's driver keeps everybody waiting for more than five seconds. Defines a name for a
// device that has none and takes it back; may be called on any thread.
std::optional<std::wstring> ReadHardwareAddress(std::wstring_view device,
                                                const DeviceApi& api = DeviceApi::System());

} // namespace tervane
