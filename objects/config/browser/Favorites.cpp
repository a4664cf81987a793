#include "objects/config/browser/Favorites.h"

#include "ZelBase/Handles.h"
#include "ZelBase/SystemLibrary.h"
#include "objects/config/browser/FavoriteName.h"
#include "platform/text/LetterCase.h"
#include "platform/text/NarrowText.h"

#include <shlobj.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tervane {
namespace {

using NarrowFunction = BOOL(WINAPI*)(HWND, LPSTR, int, BOOL);
using WideFunction = BOOL(WINAPI*)(HWND, LPWSTR, int, BOOL);

} // namespace

// The wide function where there is one that works. The narrow one spells a character that the code
// page lacks as the letter that looks most like it, and so may lead into the folder of another
// user.
std::wstring FavoritesFolder(bool create) {
    const ZelBase::SystemLibrary shell("Shell32.dll");
    const auto wide = shell.Find<WideFunction>("SHGetSpecialFolderPathW");
    const auto narrow = shell.Find<NarrowFunction>("SHGetSpecialFolderPathA");
    wchar_t widePath[MAX_PATH] = {};
    if (wide && wide(nullptr, widePath, CSIDL_FAVORITES, create)) {
        return widePath;
    }
    char narrowPath[MAX_PATH] = {};
    return narrow && narrow(nullptr, narrowPath, CSIDL_FAVORITES, create) ? FromNarrow(narrowPath)
                                                                          : L"";
}

namespace {

constexpr wchar_t kSection[] = L"InternetShortcut";
constexpr wchar_t kKey[] = L"URL";
constexpr std::size_t kUsualUrl = 1024;
constexpr std::size_t kLongestUrl = 65'536;

std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found = {};
    const ZelBase::UniqueFind search(FindFirstFileW((folder + L"\\*.*").c_str(), &found));
    for (BOOL more = static_cast<bool>(search); more; more = FindNextFileW(search.Get(), &found)) {
        const std::wstring_view file = found.cFileName;
        const bool isFolder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        if (!isFolder && EndsIgnoringAsciiCase(file, kFavoriteExtension)) {
            names.emplace_back(file.substr(0, file.size() - kFavoriteExtension.size()));
        }
    }
    return names;
}

std::wstring ReadUrl(const std::wstring& path) {
    std::wstring url(kUsualUrl, L'\0');
    for (;;) {
        const DWORD length = GetPrivateProfileStringW(kSection, kKey, L"", url.data(),
                                                      static_cast<DWORD>(url.size()), path.c_str());
        if (length + 1 < url.size() || url.size() >= kLongestUrl) {
            url.resize(length);
            return url;
        }
        url.resize(url.size() * 2);
    }
}

// A file beside the favourites in which one of them is prepared, so that the favourite itself
// changes at once or not at all. Gone at the end unless it has become the favourite.
class DraftFile {
public:
    explicit DraftFile(const std::wstring& folder) {
        wchar_t path[MAX_PATH] = {};
        if (GetTempFileNameW(folder.c_str(), L"fav", 0, path) != 0) {
            path_ = path;
        }
    }
    ~DraftFile() {
        if (!path_.empty()) {
            SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(path_.c_str());
        }
    }
    DraftFile(const DraftFile&) = delete;
    DraftFile& operator=(const DraftFile&) = delete;

    // "" when no file could be made.
    const std::wstring& Path() const noexcept { return path_; }

    bool Become(const std::wstring& path) {
        if (!MoveFileExW(path_.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            return false;
        }
        path_.clear();
        return true;
    }

private:
    std::wstring path_;
};

// Makes an empty profile file one of wide characters: only such a file can hold every text.
bool MakeWide(const std::wstring& path) {
    const ZelBase::UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const unsigned char mark[] = {0xFF, 0xFE};
    DWORD written = 0;
    return file && WriteFile(file.Get(), mark, sizeof(mark), &written, nullptr);
}

// Fills the draft with what stands in `path` already, with the new address.
bool Prepare(const DraftFile& draft, const std::wstring& path, const std::wstring& url) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    const bool isLocked = exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (draft.Path().empty() || isLocked ||
        (exists && !CopyFileW(path.c_str(), draft.Path().c_str(), FALSE)) ||
        (!exists && !ToNarrow(url) && !MakeWide(draft.Path()))) {
        return false;
    }
    // Reading it back finds the text that a file of narrow characters could not hold.
    return WritePrivateProfileStringW(kSection, kKey, url.c_str(), draft.Path().c_str()) &&
           ReadUrl(draft.Path()) == url;
}

} // namespace

std::size_t Favorites::Count() {
    const std::wstring folder = folder_(false);
    std::vector<std::wstring> found = folder.empty() ? decltype(found)() : NamesIn(folder);
    std::unordered_set<std::wstring> rest(found.begin(), found.end());
    std::erase_if(names_, [&rest](const std::wstring& name) { return rest.erase(name) == 0; });
    for (std::wstring& name : found) {
        if (rest.count(name) != 0) {
            names_.push_back(std::move(name));
        }
    }
    hasLooked_ = true;
    return names_.size();
}

void Favorites::LookOnce() {
    if (!hasLooked_) {
        Count();
    }
}

std::optional<std::wstring> Favorites::Name(std::size_t index) {
    LookOnce();
    return index < names_.size() ? std::optional(names_[index]) : std::nullopt;
}

std::optional<std::wstring> Favorites::Url(std::size_t index) {
    std::optional<std::wstring> name = Name(index);
    if (!name) {
        return std::nullopt;
    }
    return ReadUrl(folder_(false) + L"\\" + *name + std::wstring(kFavoriteExtension));
}

bool Favorites::Add(std::wstring_view name, std::wstring_view url) {
    if (!IsFavoriteName(name) || !IsFavoriteUrl(url)) {
        return false;
    }
    const std::wstring folder = folder_(true);
    const std::wstring path =
        folder + L"\\" + std::wstring(name) + std::wstring(kFavoriteExtension);
    if (folder.empty() || path.size() >= MAX_PATH) {
        return false;
    }
    DraftFile draft(folder);
    return Prepare(draft, path, std::wstring(url)) && draft.Become(path);
}

} // namespace tervane
