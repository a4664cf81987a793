#pragma once

// Hardware addresses of network adapters: six bytes, and their text "00-10-5A-00-00-01".

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tervane {

using HardwareAddressBytes = std::array<unsigned char, 6>;

// What stands for an address that is not known.
inline constexpr wchar_t kNoHardwareAddress[] = L"00-00-00-00-00-00";

// Two upper-case digits for each byte, joined by "-"; "" for no bytes. Interfaces of other kinds
// have addresses of other lengths.
std::wstring FormatHardwareAddress(std::span<const unsigned char> bytes);

// nullopt unless the text is 17 characters long and hexadecimal digits, of either case, stand where
// they should; what stands between them is not looked at.
std::optional<HardwareAddressBytes> ParseHardwareAddress(std::wstring_view text) noexcept;

} // namespace tervane
