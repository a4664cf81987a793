#pragma once

#include <string>
#include <string_view>

namespace ZelBase {

// RFC 4648, section 4: the standard alphabet, padded with "=", in one line however long.
std::string Base64Encode(std::string_view data);
// Writes that to `out`, which has room for Base64Size(data.size()) characters, and returns how many
// these are. Texts of multiples of three bytes may be encoded one after another.
std::size_t Base64Encode(std::string_view data, char* out) noexcept;
constexpr std::size_t Base64Size(std::size_t bytes) noexcept {
    return (bytes + 2) / 3 * 4;
}

} // namespace ZelBase
