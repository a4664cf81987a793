#pragma once

// Texts in the structures of dial-up networking: character arrays of fixed length, wide or narrow.

#include "platform/NarrowText.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// A text for a function of the form with these characters. nullopt when it cannot be one: a zero
// character would end it, and the code page may lack a character.
template <typename Character>
std::optional<std::basic_string<Character>> ToRasText(std::wstring_view text) {
    if (text.find(L'\0') != std::wstring_view::npos) {
        return std::nullopt;
    }
    if constexpr (sizeof(Character) == sizeof(wchar_t)) {
        return std::wstring(text);
    } else {
        return ToNarrow(text);
    }
}

template <typename Character, size_t size>
std::wstring FromRasText(const Character (&place)[size]) {
    const std::basic_string_view<Character> text(
        place, std::find(place, place + size, Character()) - place);
    if constexpr (sizeof(Character) == sizeof(wchar_t)) {
        return std::wstring(text);
    } else {
        return FromNarrow(text);
    }
}

// False, and nothing is changed, when the text does not fit.
template <typename Character, size_t size>
bool PutRasText(std::wstring_view text, Character (&place)[size]) {
    const std::optional<std::basic_string<Character>> converted = ToRasText<Character>(text);
    if (!converted || converted->size() >= size) {
        return false;
    }
    std::fill(std::copy(converted->begin(), converted->end(), place), place + size, Character());
    return true;
}

} // namespace tervane
