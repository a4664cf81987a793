#include "ZelNet/SourceCode/IpAddress.h"

#include <winsock2.h>

#include <cstring>

namespace ZelNet {

void AIpAddress::SetAddress(std::uint32_t value) {
    value_ = value;
    valid_ = true;
}

std::string AIpAddress::GetText() const {
    unsigned char bytes[sizeof value_];
    std::memcpy(bytes, &value_, sizeof bytes);
    std::string text;
    for (const unsigned char byte : bytes) {
        text.append(text.empty() ? "" : ".").append(std::to_string(byte));
    }
    return text;
}

void AIpAddress::SetInvalid() {
    value_ = 0;
    valid_ = false;
}

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
