#pragma once

#include "ZelBase/text/SecretText.h"
#include "component/ComEdge.h"
#include "platform/ComValues.h"

#include <string>
#include <utility>

namespace tervane {

// For a `[propput]` of a text: keeps a copy in `field`, a std::wstring or, for a password, a
// WideSecretText. The old text's memory is given back.
template <typename Text>
HRESULT StoreText(Text& field, BSTR text) noexcept {
    return Guarded([&] {
        const Text old = std::exchange(field, Text(TextOf(text)));
        return S_OK;
    });
}

} // namespace tervane
