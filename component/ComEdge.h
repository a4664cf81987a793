#pragma once

// Where C++ exceptions end. Whatever a host may call wraps in Guarded() what may throw; threads and
// callbacks, whose caller is the system, wrap it in Contained(). Elsewhere failures are ordinary
// return values; every other place that catches all exceptions says why.

#include <new>
#include <type_traits>
#include <utility>

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

// Runs `body`; its answer, or `fallback` when it throws.
template <typename Body>
std::invoke_result_t<Body&> Contained(Body&& body, std::invoke_result_t<Body&> fallback) noexcept {
    try {
        return body();
    } catch (...) {
        return fallback;
    }
}

// The same for a body without an answer: there is nobody to tell.
template <typename Body>
requires std::is_void_v<std::invoke_result_t<Body&>>
void Contained(Body&& body) noexcept {
    try {
        body();
    } catch (...) {
    }
}

} // namespace tervane
