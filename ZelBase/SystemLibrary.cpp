#include "ZelBase/SystemLibrary.h"

#include "ZelBase/text/AnsiText.h"

#include <algorithm>
#include <cstring>

namespace ZelBase {
namespace {

LibraryApi FindApi() noexcept {
    LibraryApi api = {
        &::GetSystemDirectoryW, &::GetSystemDirectoryA, &::LoadLibraryExW, &::LoadLibraryExA,
        &::GetModuleFileNameW,  &::GetModuleFileNameA,  nullptr,           false};
    const HMODULE kernel = GetModuleHandleA("kernel32.dll");
    api.getModuleHandleEx = reinterpret_cast<decltype(api.getModuleHandleEx)>(
        reinterpret_cast<void*>(GetProcAddress(kernel, "GetModuleHandleExW")));
    // The function that came with the flag, which itself cannot be asked for.
    api.searchesSystemOnly = GetProcAddress(kernel, "AddDllDirectory") != nullptr;
    return api;
}

// The 95 family has the wide functions by name only.
bool IsMissing(const void* result) noexcept {
    return !result && GetLastError() == ERROR_CALL_NOT_IMPLEMENTED;
}

template <typename Character, typename GetDirectory, typename Load>
HMODULE LoadFromSystem(GetDirectory getDirectory, Load load, const char* name, DWORD flags) {
    Character path[MAX_PATH];
    const UINT folder = getDirectory(path, MAX_PATH);
    if (folder == 0) {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return nullptr;
    }
    const std::size_t length = std::strlen(name);
    if (folder + 1 + length >= MAX_PATH) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return nullptr;
    }
    path[folder] = '\\';
    std::copy_n(name, length + 1, path + folder + 1);
    return load(path, nullptr, flags);
}

// Loads the module once more by its path, which counts a reference.
template <typename Character, typename GetPath, typename Load>
HMODULE LoadAgain(GetPath getPath, Load load, HMODULE module) {
    Character path[MAX_PATH];
    const DWORD length = getPath(module, path, MAX_PATH);
    if (length == 0) {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return nullptr;
    }
    return length < MAX_PATH ? load(path, nullptr, 0) : nullptr;
}

} // namespace

const LibraryApi& LibraryApi::System() noexcept {
    static const LibraryApi api = FindApi();
    return api;
}

SystemLibrary::SystemLibrary(const char* name, const LibraryApi& api) noexcept {
    const DWORD flags =
        api.searchesSystemOnly ? LOAD_LIBRARY_SEARCH_SYSTEM32 : LOAD_WITH_ALTERED_SEARCH_PATH;
    library_.Reset(LoadFromSystem<wchar_t>(api.getSystemDirectoryW, api.loadLibraryW, name, flags));
    if (IsMissing(library_.Get())) {
        library_.Reset(
            LoadFromSystem<char>(api.getSystemDirectoryA, api.loadLibraryA, name, flags));
    }
}

FARPROC SystemLibrary::FindAddress(const char* name) const noexcept {
    return library_ ? GetProcAddress(library_.Get(), name) : nullptr;
}

std::wstring ModulePath(HMODULE module, const LibraryApi& api) {
    wchar_t path[MAX_PATH];
    const DWORD length = api.getModuleFileNameW(module, path, MAX_PATH);
    if (length != 0) {
        return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
    }
    char narrowPath[MAX_PATH];
    const DWORD narrowLength = api.getModuleFileNameA(module, narrowPath, MAX_PATH);
    return narrowLength < MAX_PATH ? AnsiToWide({narrowPath, narrowLength}) : std::wstring();
}

UniqueLibrary ReferenceModuleOf(const void* code, const LibraryApi& api) noexcept {
    UniqueLibrary reference;
    if (api.getModuleHandleEx) {
        api.getModuleHandleEx(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                              static_cast<const wchar_t*>(code), reference.Put());
        return reference;
    }
    MEMORY_BASIC_INFORMATION memory = {};
    if (VirtualQuery(code, &memory, sizeof memory) == 0 || memory.Type != MEM_IMAGE) {
        return reference;
    }
    const auto module = static_cast<HMODULE>(memory.AllocationBase);
    reference.Reset(LoadAgain<wchar_t>(api.getModuleFileNameW, api.loadLibraryW, module));
    if (IsMissing(reference.Get())) {
        reference.Reset(LoadAgain<char>(api.getModuleFileNameA, api.loadLibraryA, module));
    }
    // Another file may have been put in its place.
    if (reference.Get() != module) {
        reference.Reset();
    }
    return reference;
}

} // namespace ZelBase
