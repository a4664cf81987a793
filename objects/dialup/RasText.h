#pragma once

// Texts in the structures of dial-up networking: character arrays of fixed length, wide or narrow.

#include "ZelBase/text/SecretText.h"
#include "platform/text/NarrowText.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

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

template <typename Character, std::size_t size>
std::wstring FromRasText(const Character (&place)[size]) {
    const std::basic_string_view<Character> text(
        place, std::find(place, place + size, Character()) - place);
    if constexpr (sizeof(Character) == sizeof(wchar_t)) {
        return std::wstring(text);
    } else {
        return FromNarrow(text);
    }
}

// Fills the place; no character of `text` is left out.
template <typename Character, std::size_t size>
void FillRasText(std::basic_string_view<Character> text, Character (&place)[size]) noexcept {
    std::fill(std::copy(text.begin(), text.end(), place), place + size, Character());
}

// False, and nothing is changed, when the text does not fit.
template <typename Character, std::size_t size>
bool PutRasText(std::wstring_view text, Character (&place)[size]) {
    const std::optional<std::basic_string<Character>> converted = ToRasText<Character>(text);
    if (!converted || converted->size() >= size) {
        return false;
    }
    FillRasText<Character>(*converted, place);
    return true;
}

// The same for a password, of which nothing is left anywhere else.
template <typename Character, std::size_t size>
bool PutRasSecret(std::wstring_view text, Character (&place)[size]) noexcept {
    if (text.find(L'\0') != std::wstring_view::npos || text.size() >= size) {
        return false;
    }
    if constexpr (sizeof(Character) == sizeof(wchar_t)) {
        FillRasText<Character>(text, place);
        return true;
    } else {
        char narrow[size];
        wchar_t back[size];
        const ZelBase::WipeAtEnd wipeNarrow(narrow);
        const ZelBase::WipeAtEnd wipeBack(back);
        const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                              narrow, size - 1, nullptr, nullptr);
        const int characters = MultiByteToWideChar(CP_ACP, 0, narrow, bytes, back, size);
        // The code page may lack a character.
        if (text != std::wstring_view(back, static_cast<std::size_t>(characters))) {
            return false;
        }
        FillRasText<Character>({narrow, static_cast<std::size_t>(bytes)}, place);
        return true;
    }
}

} // namespace tervane
