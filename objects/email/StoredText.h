#pragma once

#include "component/ComEdge.h"
#include "platform/Automation.h"

#include <string>

namespace tervane {

// For a `[propput]` of a text: keeps a copy in `field`.
inline HRESULT StoreText(std::wstring& field, BSTR text) noexcept {
    return Guarded([&] {
        field = std::wstring(TextOf(text)); // gives the old text's memory back
        return S_OK;
    });
}

} // namespace tervane
