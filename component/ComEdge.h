#pragma once

// The one place where C++ exceptions end. Whatever a host may call wraps its body in Guarded();
// below it, failures are ordinary return values.

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
