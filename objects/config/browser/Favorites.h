#pragma once

// The favourites: internet shortcuts in one folder, each a file with the extension ".URL" whose
// section "InternetShortcut" has the address under "URL". Other files and subfolders are not looked
// at.
//
// Indices follow the order in which the folder lists its files. Since file systems may change it
// with every file, the order once told is kept: what is new comes last, what is gone leaves.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

// The user's favourites folder, where browser and shell keep internet shortcuts.

// Its path without a backslash at the end; "" when the shell is too old to know one, or when there
// is no such folder and it shall not or cannot be made.
std::wstring FavoritesFolder(bool create);

class Favorites {
public:
    // Tells the folder, and makes it when `create` is true; "" when there is none.
    using FolderSource = std::function<std::wstring(bool create)>;

    explicit Favorites(FolderSource folder) : folder_(std::move(folder)) {}

    // Looks into the folder. The indices below the number returned are valid until the next call.
    std::size_t Count();
    // nullopt for an index out of range.
    std::optional<std::wstring> Name(std::size_t index);
    // "" when the file cannot be read or has no address.
    std::optional<std::wstring> Url(std::size_t index);

    // Writes the favourite; one of the same name gets the new address and keeps everything else. On
    // failure the folder is as it was.
    bool Add(std::wstring_view name, std::wstring_view url);

private:
    void LookOnce();

    FolderSource folder_;
    std::vector<std::wstring> names_;
    bool hasLooked_ = false;
};

} // namespace tervane
