#pragma once

// One IPv4 address, as dotted text for people and as a 32-bit value in network order for sockets.

#include <cstdint>
#include <string>

namespace ZelNet {

class AIpAddress {
public:
    // Takes the address from a text. False for a text that is none: the address is then the unset
    // one and not valid.
    virtual bool SetAddress(const std::string& text) = 0;
    // Takes the address from its value in network order; every value is valid.
    void SetAddress(std::uint32_t value);

    // "%d.%d.%d.%d", the bytes in network order; "0.0.0.0" when unset.
    std::string GetText() const;
    std::uint32_t GetValue() const { return value_; }
    // False after a text that was none.
    bool IsValid() const { return valid_; }

    bool operator==(const AIpAddress& other) const { return value_ == other.value_; }

protected:
    AIpAddress() = default;
    AIpAddress(const AIpAddress&) = default;
    AIpAddress& operator=(const AIpAddress&) = default;
    ~AIpAddress() = default;

    void SetInvalid();

private:
    std::uint32_t value_ = 0;
    bool valid_ = true;
};

} // namespace ZelNet
