#include "objects/config/browser/FavoritesFolder.h"

#include "ZelBase/SystemLibrary.h"
#include "platform/text/NarrowText.h"

#include <shlobj.h>

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

} // namespace tervane
