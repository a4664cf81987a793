#pragma once

// `WScript.Arguments.Named`: those words of the command line that begin with a slash, by name. With
// "/name:value" the value is a text, with "/name+" and "/name-" true and false, with "/name" empty.

#include "tools/script_host/NamedDispatch.h"

#include <string>
#include <vector>

namespace tervane::scripthost {

bool IsNamedArgument(const std::wstring& word);

class NamedArguments : public NamedDispatch<NamedArguments> {
public:
    static constexpr const wchar_t* kName = L"WScript.Arguments.Named";
    static std::span<const Member> Members();

    // Of `words` the named ones count; of those with one name, in any case, the first.
    explicit NamedArguments(const std::vector<std::wstring>& words);

    // The value of the name given as the one argument; empty for an unknown one, too.
    CallOutcome Item(const CallArguments& arguments, Variant& result);

private:
    struct Argument {
        std::wstring name;
        std::wstring value; // what follows the name, with its sign
    };

    CallOutcome Exists(const CallArguments& arguments, Variant& result);
    CallOutcome Count(const CallArguments& arguments, Variant& result);
    CallOutcome NewEnum(const CallArguments& arguments, Variant& result);
    // Null if there is none.
    const Argument* Find(const std::wstring& name) const;

    std::vector<Argument> arguments_;
};

} // namespace tervane::scripthost
