#pragma once

#include <string>
#include <string_view>

namespace tervane {

// The address of the envelope in what a From or To header says: what stands between angle brackets,
// outside of quotes, or else all of it; without blanks around, and with a blank for each zero
// character. It may be anything else than an address: the client that sends it looks at the bytes.
std::string EnvelopeAddress(std::wstring_view header);

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
