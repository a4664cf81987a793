#include "ZelNet/SourceCode/AIpAddress.h"

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

} // namespace ZelNet
