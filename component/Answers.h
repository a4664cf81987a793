#pragma once

// How a member answers: the `[out,retval]` place is checked and given a harmless value first, then
// the body runs behind the guard and its result is put into automation's form. Each returns
// E_POINTER for a null place.

#include "component/ComEdge.h"
#include "platform/ComValues.h"

#include <string>
#include <vector>

namespace tervane {

// `body` returns bool.
template <typename Body>
HRESULT AnswerFlag(VARIANT_BOOL* result, Body body) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = VARIANT_FALSE;
    return Guarded([&] {
        *result = body() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

// `body` returns a number.
template <typename Body>
HRESULT AnswerNumber(long* result, Body body) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = 0;
    return Guarded([&] {
        *result = static_cast<long>(body());
        return S_OK;
    });
}

// `body` returns a text.
template <typename Body>
HRESULT AnswerText(BSTR* result, Body body) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    return Guarded([&] { return ReturnText(body(), result); });
}

// `body` returns a vector of texts.
template <typename Body>
HRESULT AnswerTexts(VARIANT* result, Body body) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    VariantInit(result);
    return Guarded([&] { return ReturnValue(MakeTextArray(body()), result); });
}

} // namespace tervane
