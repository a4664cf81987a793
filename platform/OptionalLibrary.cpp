#include "platform/OptionalLibrary.h"

#include <iterator>

namespace tervane {

OptionalLibrary::OptionalLibrary(const wchar_t* name) noexcept {
    wchar_t path[MAX_PATH] = {};
    const UINT folder = GetSystemDirectoryW(path, static_cast<UINT>(std::size(path)));
    const size_t length = folder + 1 + wcslen(name);
    if (folder == 0 || length >= std::size(path)) {
        return;
    }
    path[folder] = L'\\';
    wcscpy(path + folder + 1, name);
    library_.Reset(LoadLibraryW(path));
}

FARPROC OptionalLibrary::FindAddress(const char* name) const noexcept {
    return library_ ? GetProcAddress(library_.Get(), name) : nullptr;
}

} // namespace tervane
