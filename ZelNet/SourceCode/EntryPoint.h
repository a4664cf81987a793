#pragma once

#include "ZelBase/Handles.h"

namespace ZelNet {

// Looks a function of a library up into a pointer to it; null when library or function is missing.
template <typename Function>
void FindEntryPoint(const ZelBase::UniqueLibrary& library, const char* name, Function& function) {
    function = nullptr;
    if (library) {
        function = reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(library.Get(), name)));
    }
}

} // namespace ZelNet
