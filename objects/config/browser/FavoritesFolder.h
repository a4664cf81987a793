#pragma once

// The user's favourites folder, where browser and shell keep internet shortcuts.

#include <string>

namespace tervane {

// Its path without a backslash at the end; "" when the shell is too old to know one, or when there
// is no such folder and it shall not or cannot be made.
std::wstring FavoritesFolder(bool create);

} // namespace tervane
