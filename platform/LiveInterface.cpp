#include "platform/LiveInterface.h"

#include "platform/HardwareAddress.h"

namespace tervane {

std::wstring HardwareAddressText(std::string_view bytes) {
    if (bytes.size() != HardwareAddressBytes().size()) {
        return kNoHardwareAddress;
    }
    return FormatHardwareAddress(
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

} // namespace tervane
