#pragma once

// Walks over a list of texts for "For Each" and JScript's Enumerator.

#include "tools/script_host/ComBase.h"

#include "platform/ComValues.h"

#include <oaidl.h>

#include <memory>
#include <string>
#include <vector>

namespace tervane::scripthost {

class TextEnumerator : public ComBase<IEnumVARIANT> {
public:
    using Texts = std::vector<std::wstring>;

    explicit TextEnumerator(std::shared_ptr<const Texts> texts, std::size_t position = 0)
        : texts_(std::move(texts)), position_(position) {}

    STDMETHODIMP Next(ULONG wanted, VARIANT* values, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumVARIANT** copy) override;

private:
    const std::shared_ptr<const Texts> texts_;
    std::size_t position_;
};

// What `_NewEnum` answers.
Variant EnumeratorOf(const TextEnumerator::Texts& texts);

} // namespace tervane::scripthost
