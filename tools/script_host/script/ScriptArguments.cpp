#include "tools/script_host/script/ScriptArguments.h"

#include "tools/script_host/script/NamedArguments.h"
#include "tools/script_host/script/TextEnumerator.h"

#include <algorithm>
#include <iterator>

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
        {L"Named", 3, kProperty, &Self::Named},
        {L"Unnamed", 4, kProperty, &Self::Unnamed},
        {L"_NewEnum", DISPID_NEWENUM, kProperty, &Self::NewEnum},
    };
    return kMembers;
}

CallOutcome ScriptArguments::Item(const CallArguments& arguments, Variant& result) {
    std::optional<LONG> index = arguments.Number(0);
    if (arguments.Count() != 1 || !index) {
        return {E_INVALIDARG, L"An index is needed."};
    }
    if (*index < 0 || static_cast<std::size_t>(*index) >= words_.size()) {
        return {kSubscriptOutOfRange, L"Subscript out of range"};
    }
    std::optional<Variant> word = Variant::FromText(words_[static_cast<std::size_t>(*index)]);
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

// With arguments it stands for the collection's default member, here and below.
CallOutcome ScriptArguments::Named(const CallArguments& arguments, Variant& result) {
    ComPtr<NamedArguments> named(new NamedArguments(words_));
    if (arguments.Count() != 0) {
        return named->Item(arguments, result);
    }
    result = Variant::FromObject(AddReference<IDispatch>(named.Get()));
    return {};
}

CallOutcome ScriptArguments::Unnamed(const CallArguments& arguments, Variant& result) {
    std::vector<std::wstring> words;
    std::copy_if(words_.begin(), words_.end(), std::back_inserter(words),
                 [](const std::wstring& word) { return !IsNamedArgument(word); });
    ComPtr<ScriptArguments> unnamed(new ScriptArguments(std::move(words)));
    if (arguments.Count() != 0) {
        return unnamed->Item(arguments, result);
    }
    result = Variant::FromObject(AddReference<IDispatch>(unnamed.Get()));
    return {};
}

CallOutcome ScriptArguments::NewEnum(const CallArguments&, Variant& result) {
    result = EnumeratorOf(words_);
    return {};
}

} // namespace tervane::scripthost
