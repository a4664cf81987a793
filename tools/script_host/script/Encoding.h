#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace tervane::scripthost {

// nullopt if the bytes are not of this code page.
std::optional<std::wstring> FromCodePage(UINT codePage, std::string_view bytes);

} // namespace tervane::scripthost
