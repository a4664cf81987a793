#pragma once

// Whether an address lets its owner talk to others.

#include <string_view>

namespace tervane {

// False for "", for "0.0.0.0", and for the addresses that systems give themselves when nobody else
// does (RFC 3927), which only neighbours in the same plight can reach. Any other text is believed.
constexpr bool IsUsableAddress(std::wstring_view address) noexcept {
    return !address.empty() && address != L"0.0.0.0" && !address.starts_with(L"169.254");
}

} // namespace tervane
