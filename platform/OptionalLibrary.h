#pragma once

// A system library that some systems lack. It is loaded at run time, so that the component starts
// everywhere and only the feature that needs it is missing.

#include "ZelBase/Handles.h"

namespace tervane {

class OptionalLibrary {
public:
    // Without a library: no function is found.
    OptionalLibrary() noexcept = default;
    // Loads `name`, such as "rasapi32.dll", from the system's own folder and from nowhere else: the
    // folder of the host, or the current one, may be anybody's.
    explicit OptionalLibrary(const wchar_t* name) noexcept;

    explicit operator bool() const noexcept { return static_cast<bool>(library_); }

    // The exported function, valid as long as this object; null when the library lacks it.
    template <typename Function>
    Function Find(const char* name) const noexcept {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(FindAddress(name)));
    }

private:
    FARPROC FindAddress(const char* name) const noexcept;

    ZelBase::UniqueLibrary library_;
};

} // namespace tervane
