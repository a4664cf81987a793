#include "ZelNet/SourceCode/AIpAddress.h"

#include <cstdio>
#include <cstring>

namespace ZelNet {

void AIpAddress::SetAddress(std::uint32_t value) {
    value_ = value;
    valid_ = true;
}

std::string AIpAddress::GetText() const {
    unsigned char bytes[sizeof value_];
    std::memcpy(bytes, &value_, sizeof bytes);
    char text[sizeof "255.255.255.255"];
    std::snprintf(text, sizeof text, "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    return text;
}

void AIpAddress::SetInvalid() {
    value_ = 0;
    valid_ = false;
}

} // namespace ZelNet
