#include "tools/script_host/events/CallArguments.h"

namespace tervane::scripthost {

bool CallArguments::Has(unsigned index) const noexcept {
    if (index >= parameters_.cArgs) {
        return false;
    }
    const VARIANT& value = parameters_.rgvarg[parameters_.cArgs - 1 - index];
    return value.vt != VT_ERROR || value.scode != DISP_E_PARAMNOTFOUND;
}

std::optional<Variant> CallArguments::Value(unsigned index) const noexcept {
    if (!Has(index)) {
        return std::nullopt;
    }
    return Variant::CopyOf(parameters_.rgvarg[parameters_.cArgs - 1 - index]);
}

std::optional<std::wstring> CallArguments::Text(unsigned index) const {
    std::optional<Variant> value = Value(index);
    if (value && value->Type() == VT_NULL) {
        return L"null";
    }
    std::optional<Variant> text = value ? value->As(VT_BSTR) : std::nullopt;
    if (!text) {
        return std::nullopt;
    }
    return std::wstring(text->Text());
}

std::optional<LONG> CallArguments::Number(unsigned index) const noexcept {
    std::optional<Variant> value = Value(index);
    std::optional<Variant> number = value ? value->As(VT_I4) : std::nullopt;
    if (!number) {
        return std::nullopt;
    }
    return number->Get().lVal;
}

ComPtr<IDispatch> CallArguments::Object(unsigned index) const noexcept {
    std::optional<Variant> value = Value(index);
    if (!value || (value->Type() != VT_DISPATCH && value->Type() != VT_UNKNOWN)) {
        return {};
    }
    return QueryFor<IDispatch>(value->Get().punkVal);
}

} // namespace tervane::scripthost
