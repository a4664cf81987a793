#pragma once

// Names of favourites become file names, and they come from scripts: one that a file system
// refuses, or that would name a device or a file elsewhere, must not reach it.

#include <string_view>

namespace tervane {

inline constexpr std::wstring_view kFavoriteExtension = L".URL";

// Whether `name` with the extension is the name of a file on every Windows file system.
bool IsFavoriteName(std::wstring_view name) noexcept;

// Whether a favourite's address can stand on a line of its file: not empty, no control characters,
// no blanks at its ends, which reading would drop.
bool IsFavoriteUrl(std::wstring_view url) noexcept;

} // namespace tervane
