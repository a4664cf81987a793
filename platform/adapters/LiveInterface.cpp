#include "platform/adapters/LiveInterface.h"

#include "platform/adapters/HardwareAddress.h"

namespace tervane {

std::wstring HardwareAddressText(std::string_view bytes) {
    if (bytes.size() != HardwareAddressBytes().size()) {
        return kNoHardwareAddress;
    }
    return FormatHardwareAddress(
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

} // namespace tervane
