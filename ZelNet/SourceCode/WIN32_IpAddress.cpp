#include "ZelNet/SourceCode/WIN32_IpAddress.h"

#include <winsock2.h>

namespace ZelNet {

WIN32_IpAddress::WIN32_IpAddress(const std::string& text) {
    SetAddress(text);
}

WIN32_IpAddress::WIN32_IpAddress(std::uint32_t value) {
    SetAddress(value);
}

bool WIN32_IpAddress::SetAddress(const std::string& text) {
    const std::uint32_t value = inet_addr(text.c_str());
    // The broadcast address looks like the failure value of inet_addr.
    if (value == INADDR_NONE && text != "255.255.255.255") {
        SetInvalid();
        return false;
    }
    SetAddress(value);
    return true;
}

} // namespace ZelNet
