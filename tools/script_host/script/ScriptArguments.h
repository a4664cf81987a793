#pragma once

// `WScript.Arguments`: the words that follow the script on the command line, as a collection; also
// those of them that are not named, `WScript.Arguments.Unnamed`.

#include "tools/script_host/NamedDispatch.h"

#include <string>
#include <vector>

namespace tervane::scripthost {

class ScriptArguments : public NamedDispatch<ScriptArguments> {
public:
    static constexpr const wchar_t* kName = L"WScript.Arguments";
    static std::span<const Member> Members();

    explicit ScriptArguments(std::vector<std::wstring> words) : words_(std::move(words)) {}

    // The word at the index given as the one argument, counted from 0.
    CallOutcome Item(const CallArguments& arguments, Variant& result);

private:
    CallOutcome Count(const CallArguments& arguments, Variant& result);
    CallOutcome Named(const CallArguments& arguments, Variant& result);
    CallOutcome Unnamed(const CallArguments& arguments, Variant& result);
    CallOutcome NewEnum(const CallArguments& arguments, Variant& result);

    const std::vector<std::wstring> words_;
};

} // namespace tervane::scripthost
