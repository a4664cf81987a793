#pragma once

// IPv4 addresses as scripts write them, four numbers with dots, strictly: a phone book would keep
// whatever a lenient reading makes of "10.1" or "010.0.0.1".

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// In the order in which they are written. All zero means that there is no address.
using Ipv4Bytes = std::array<unsigned char, 4>;

// "" is no address; nullopt for any other text that is none.
std::optional<Ipv4Bytes> ParseIpv4(std::wstring_view text) noexcept;

// "" for no address.
std::wstring Ipv4Text(const Ipv4Bytes& bytes);

} // namespace tervane
