#pragma once

// The list of hosts that are reached without the proxy, and the marker in it that stands for all
// local addresses. Windows keeps the marker as the list's last entry, and so does this: what would
// stand behind it counts as part of it and goes with it.
//
// A result of "" means that nothing is to be stored.

#include <string>
#include <string_view>

namespace tervane {

inline constexpr std::wstring_view kLocalBypass = L"<local>";

bool HasLocalBypass(std::wstring_view list) noexcept;
// Either returns a list that is so already as it stands.
std::wstring WithLocalBypass(std::wstring_view list);
std::wstring WithoutLocalBypass(std::wstring_view list);
// `exceptions` in place of those in `list`, whose marker stays if it has it. The marker is not
// doubled when the exceptions bring it along, as those that were read from a list do.
std::wstring WithExceptions(std::wstring_view list, std::wstring_view exceptions);

} // namespace tervane
