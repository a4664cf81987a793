#pragma once

// Names for the narrow forms of Windows' functions, in the code page of the machine.

#include "ZelBase/text/AnsiText.h"

#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// nullopt when the code page lacks a character: an approximate name would name something else.
std::optional<std::string> ToNarrow(std::wstring_view text);

inline std::wstring FromNarrow(std::string_view text) {
    return ZelBase::AnsiToWide(text);
}

} // namespace tervane
