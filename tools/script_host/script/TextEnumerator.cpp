#include "tools/script_host/script/TextEnumerator.h"

#include "component/ComEdge.h"

#include <algorithm>

namespace tervane::scripthost {

HRESULT TextEnumerator::Next(ULONG wanted, VARIANT* values, ULONG* fetched) {
    if (values == nullptr || (fetched == nullptr && wanted != 1)) {
        return E_POINTER;
    }
    ULONG count = 0;
    for (; count < wanted && position_ < texts_->size(); ++count, ++position_) {
        std::optional<Variant> text = Variant::FromText((*texts_)[position_]);
        if (!text) {
            break;
        }
        values[count] = text->Release();
    }
    if (fetched != nullptr) {
        *fetched = count;
    }
    return count == wanted ? S_OK : S_FALSE;
}

HRESULT TextEnumerator::Skip(ULONG count) {
    std::size_t left = texts_->size() - position_;
    position_ += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
}

HRESULT TextEnumerator::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT TextEnumerator::Clone(IEnumVARIANT** copy) {
    if (copy == nullptr) {
        return E_POINTER;
    }
    *copy = nullptr;
    return Guarded([&] {
        *copy = new TextEnumerator(texts_, position_);
        return S_OK;
    });
}

Variant EnumeratorOf(const TextEnumerator::Texts& texts) {
    VARIANT enumerator{};
    enumerator.vt = VT_UNKNOWN;
    enumerator.punkVal = new TextEnumerator(std::make_shared<TextEnumerator::Texts>(texts));
    return Variant(enumerator);
}

} // namespace tervane::scripthost
