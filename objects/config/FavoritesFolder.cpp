#include "objects/config/FavoritesFolder.h"

#include "ZelBase/SystemLibrary.h"
#include "platform/NarrowText.h"

#include <shlobj.h>

namespace tervane {
namespace {

using NarrowFunction = BOOL(WINAPI*)(HWND, LPSTR, int, BOOL);
using WideFunction = BOOL(WINAPI*)(HWND, LPWSTR, int, BOOL);

} // namespace

std::wstring FavoritesFolder(bool create) {
    const ZelBase::SystemLibrary shell("Shell32.dll");
    const auto narrow = shell.Find<NarrowFunction>("SHGetSpecialFolderPathA");
    const auto wide = shell.Find<WideFunction>("SHGetSpecialFolderPathW");
    char narrowPath[MAX_PATH] = {};
    wchar_t widePath[MAX_PATH] = {};
    if (!narrow || !narrow(nullptr, narrowPath, CSIDL_FAVORITES, create)) {
        return {};
    }
    // A path with a character that the code page lacks tells so by one that no path can contain.
    std::wstring path = FromNarrow(narrowPath);
    if (path.find(L'?') == std::wstring::npos) {
        return path;
    }
    return wide && wide(nullptr, widePath, CSIDL_FAVORITES, create) ? widePath : L"";
}

} // namespace tervane
