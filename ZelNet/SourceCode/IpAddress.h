#pragma once

// The address type that the library and its users hold and hand around by value.

#include <cstdint>
#include <string>

namespace ZelNet {

// One IPv4 address, as dotted text for people and as a 32-bit value in network order for sockets.
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

// Reads texts as inet_addr does, which knows more forms than the dotted quad.
class WIN32_IpAddress final : public AIpAddress {
public:
    // The unset address.
    WIN32_IpAddress() = default;
    explicit WIN32_IpAddress(const std::string& text);
    explicit WIN32_IpAddress(std::uint32_t value);

    using AIpAddress::SetAddress;
    bool SetAddress(const std::string& text) override;
};

using IpAddress = WIN32_IpAddress;

// The loopback address, "127.0.0.1".
inline IpAddress LoopbackAddress() {
    return IpAddress("127.0.0.1");
}

} // namespace ZelNet
