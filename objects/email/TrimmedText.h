#pragma once

#include <string_view>

namespace tervane {

// What stands around a line, and is not meant.
inline constexpr wchar_t kBlanks[] = L" \t\r\n";

// The text without those of `characters` that it begins or ends with.
inline std::wstring_view Trimmed(std::wstring_view text, std::wstring_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == text.npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(characters) + 1 - first);
}

} // namespace tervane
