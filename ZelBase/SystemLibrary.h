#pragma once

// Libraries of the system, loaded at run time because some systems lack them: only the feature that
// needs one is missing there. They come from the system's own folder and from nowhere else, they
// and what they need themselves: the folder of the host, or the current one, may be anybody's. All
// libraries are loaded here.

#include "ZelBase/Handles.h"

#include <string>

namespace ZelBase {

// The system's functions about libraries, as a table: tests play other systems with it.
struct LibraryApi {
    decltype(&::GetSystemDirectoryW) getSystemDirectoryW;
    decltype(&::GetSystemDirectoryA) getSystemDirectoryA;
    decltype(&::LoadLibraryExW) loadLibraryW;
    decltype(&::LoadLibraryExA) loadLibraryA;
    decltype(&::GetModuleFileNameW) getModuleFileNameW;
    decltype(&::GetModuleFileNameA) getModuleFileNameA;
    // Null before Windows XP.
    decltype(&::GetModuleHandleExW) getModuleHandleEx;
    // Whether a library can be told to look for those it needs in the system's folder only: since
    // Windows 8, and in updated older ones.
    bool searchesSystemOnly;

    // The real ones.
    static const LibraryApi& System() noexcept;
};

class SystemLibrary {
public:
    // Without a library: no function is found.
    SystemLibrary() noexcept = default;
    // Loads `name`, such as "rasapi32.dll". When that fails, GetLastError tells why.
    explicit SystemLibrary(const char* name, const LibraryApi& api = LibraryApi::System()) noexcept;

    explicit operator bool() const noexcept { return static_cast<bool>(library_); }
    HMODULE Get() const noexcept { return library_.Get(); }

    // The exported function, valid as long as this object; null when the library lacks it.
    template <typename Function>
    Function Find(const char* name) const noexcept {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(FindAddress(name)));
    }
    template <typename Function>
    void Find(const char* name, Function& function) const noexcept {
        function = Find<Function>(name);
    }

private:
    FARPROC FindAddress(const char* name) const noexcept;

    UniqueLibrary library_;
};

// The full path of a loaded library, or of the program for null; empty when it is longer than
// MAX_PATH - 1 characters. Throws std::bad_alloc.
std::wstring ModulePath(HMODULE module, const LibraryApi& api = LibraryApi::System());

// A reference on the module that the code lies in; null when it lies in none.
UniqueLibrary ReferenceModuleOf(const void* code,
                                const LibraryApi& api = LibraryApi::System()) noexcept;

} // namespace ZelBase
