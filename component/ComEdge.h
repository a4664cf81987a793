#pragma once

// Where C++ exceptions end on their way to a host. Whatever a host may call wraps in Guarded() what
// may throw; below it, failures are ordinary return values.

#include <new>

#include <windows.h>

namespace tervane {

// Runs `body` (a callable that returns HRESULT). E_OUTOFMEMORY when memory ran out, E_UNEXPECTED
// for any other exception.
template <typename Body>
HRESULT Guarded(Body&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace tervane
