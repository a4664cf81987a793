#pragma once

// The whole way from nothing to the first object of an in-process server and back: load the
// library, ask it for the class factory, create, release, unload.

#include <windows.h>

#include <string>

namespace bench {

class ServerLoad {
public:
    // Finds the class's library in the registry; fails the program if it is not registered.
    explicit ServerLoad(const wchar_t* progId);

    // One full cycle. The library must not be in use otherwise, else this measures less.
    void Run() const;
    // The part between loading and unloading, of a library that somebody has loaded.
    void CreateLoaded() const;
    // Fails the program when the library is still loaded.
    void CheckUnloaded() const;

private:
    void Create(HMODULE library) const;

    CLSID classId_ = {};
    std::wstring library_;
};

} // namespace bench
