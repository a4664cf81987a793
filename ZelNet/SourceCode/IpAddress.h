#pragma once

// The address type that the library and its users hold and hand around by value.

#include "ZelNet/SourceCode/WIN32_IpAddress.h"

namespace ZelNet {

using IpAddress = WIN32_IpAddress;

// The loopback address, "127.0.0.1".
inline IpAddress LoopbackAddress() {
    return IpAddress("127.0.0.1");
}

} // namespace ZelNet
