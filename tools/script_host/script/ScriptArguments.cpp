#include "tools/script_host/script/ScriptArguments.h"

#include "tools/script_host/script/TextEnumerator.h"

namespace tervane::scripthost {
namespace {

// The number that both script languages give this error.
constexpr HRESULT kSubscriptOutOfRange = static_cast<HRESULT>(0x800A0009);

} // namespace

std::span<const ScriptArguments::Member> ScriptArguments::Members() {
    using Self = ScriptArguments;
    // Count is a method and length a property, but scripts use either both ways.
    static constexpr Member kMembers[] = {
        {L"Item", DISPID_VALUE, kProperty, &Self::Item},
        {L"Count", 1, kProperty, &Self::Count},
        {L"length", 2, kProperty, &Self::Count},
        {L"_NewEnum", DISPID_NEWENUM, kProperty, &Self::NewEnum},
    };
    return kMembers;
}

CallOutcome ScriptArguments::Item(const CallArguments& arguments, Variant& result) {
    std::optional<LONG> index = arguments.Number(0);
    if (arguments.Count() != 1 || !index) {
        return {E_INVALIDARG, L"An index is needed."};
    }
    if (*index < 0 || static_cast<size_t>(*index) >= words_.size()) {
        return {kSubscriptOutOfRange, L"Subscript out of range"};
    }
    std::optional<Variant> word = Variant::FromText(words_[static_cast<size_t>(*index)]);
    if (!word) {
        return {E_OUTOFMEMORY, {}};
    }
    result = *std::move(word);
    return {};
}

CallOutcome ScriptArguments::Count(const CallArguments&, Variant& result) {
    result = Variant::FromLong(static_cast<LONG>(words_.size()));
    return {};
}

CallOutcome ScriptArguments::NewEnum(const CallArguments&, Variant& result) {
    VARIANT enumerator{};
    enumerator.vt = VT_UNKNOWN;
    enumerator.punkVal = new TextEnumerator(std::make_shared<TextEnumerator::Texts>(words_));
    result = Variant(enumerator);
    return {};
}

} // namespace tervane::scripthost
