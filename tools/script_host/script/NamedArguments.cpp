#include "tools/script_host/script/NamedArguments.h"

#include "tools/script_host/script/TextEnumerator.h"

#include <algorithm>
#include <cwchar>

namespace tervane::scripthost {

bool IsNamedArgument(const std::wstring& word) {
    return word.starts_with(L'/');
}

std::span<const NamedArguments::Member> NamedArguments::Members() {
    using Self = NamedArguments;
    static constexpr Member kMembers[] = {
        {L"Item", DISPID_VALUE, kProperty, &Self::Item},
        {L"Count", 1, kProperty, &Self::Count},
        {L"length", 2, kProperty, &Self::Count},
        {L"Exists", 3, kMethod, &Self::Exists},
        {L"_NewEnum", DISPID_NEWENUM, kProperty, &Self::NewEnum},
    };
    return kMembers;
}

NamedArguments::NamedArguments(const std::vector<std::wstring>& words) {
    for (const std::wstring& word : words) {
        if (!IsNamedArgument(word)) {
            continue;
        }
        std::size_t end = word.find(L':');
        const bool isSwitch = word.ends_with(L'+') || word.ends_with(L'-');
        if (end == std::wstring::npos) {
            end = word.size() - (isSwitch ? 1 : 0);
        }
        Argument argument{word.substr(1, end - 1), word.substr(end)};
        if (Find(argument.name) == nullptr) {
            arguments_.push_back(std::move(argument));
        }
    }
}

CallOutcome NamedArguments::Item(const CallArguments& arguments, Variant& result) {
    const std::optional<std::wstring> name = arguments.Text(0);
    if (arguments.Count() != 1 || !name) {
        return {E_INVALIDARG, L"A name is needed."};
    }
    const Argument* argument = Find(*name);
    if (argument == nullptr || argument->value.empty()) {
        return {};
    }
    if (argument->value[0] != L':') {
        result = Variant::FromBool(argument->value == L"+");
        return {};
    }
    std::optional<Variant> text = Variant::FromText(argument->value.substr(1));
    if (!text) {
        return {E_OUTOFMEMORY, {}};
    }
    result = *std::move(text);
    return {};
}

CallOutcome NamedArguments::Exists(const CallArguments& arguments, Variant& result) {
    const std::optional<std::wstring> name = arguments.Text(0);
    if (arguments.Count() != 1 || !name) {
        return {E_INVALIDARG, L"A name is needed."};
    }
    result = Variant::FromBool(Find(*name) != nullptr);
    return {};
}

CallOutcome NamedArguments::Count(const CallArguments&, Variant& result) {
    result = Variant::FromLong(static_cast<LONG>(arguments_.size()));
    return {};
}

CallOutcome NamedArguments::NewEnum(const CallArguments&, Variant& result) {
    TextEnumerator::Texts names;
    for (const Argument& argument : arguments_) {
        names.push_back(argument.name);
    }
    result = EnumeratorOf(names);
    return {};
}

const NamedArguments::Argument* NamedArguments::Find(const std::wstring& name) const {
    const auto found =
        std::find_if(arguments_.begin(), arguments_.end(), [&](const Argument& argument) {
            return _wcsicmp(argument.name.c_str(), name.c_str()) == 0;
        });
    return found == arguments_.end() ? nullptr : &*found;
}

} // namespace tervane::scripthost
