#pragma once

// The two DNS messages of a look-up (RFC 1035, section 4): the question for a name's addresses is
// composed, and what comes back is taken apart. Only bytes in, values out; whatever a hostile
// server puts into a datagram, decoding ends and stays inside it.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZelNet {

inline constexpr std::uint16_t kDnsPort = 53;
// Record types (RFC 1035, section 3.2.2).
inline constexpr std::uint16_t kDnsTypeAddress = 1;
inline constexpr std::uint16_t kDnsTypeAlias = 5;

// One record of the answer section, as far as this system is interested in it.
struct DnsAnswer {
    std::uint16_t type = 0;
    // The length of the record's data.
    std::uint16_t dataLength = 0;
    // Of an address record: the four bytes as they came, in network order.
    std::uint32_t address = 0;
    // Of an alias record: the canonical name.
    std::string alias;
};

struct DnsReply {
    // The name that was asked for.
    std::string question;
    // What came before the message ended, unknown types too. An alias that cannot be decoded and an
    // address that is not four bytes long are left out.
    std::vector<DnsAnswer> answers;
};

// The question for the addresses of `name`. Nothing when the name cannot be written in a message:
// it has an empty label, one of more than 63 bytes, or is longer than 253 bytes (section 2.3.4).
std::optional<std::vector<std::uint8_t>> BuildDnsQuery(std::string_view name);

// Takes an answer apart. Nothing when not even the question can be read.
std::optional<DnsReply> ParseDnsReply(std::span<const std::uint8_t> message);

} // namespace ZelNet
