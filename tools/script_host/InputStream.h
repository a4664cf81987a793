#pragma once

// `WScript.StdIn`. A read waits for its input, deaf to events, as in cscript.

#include "tools/script_host/NamedDispatch.h"
#include "tools/script_host/StandardInput.h"

namespace tervane::scripthost {

class InputStream : public NamedDispatch<InputStream> {
public:
    static constexpr const wchar_t* kName = L"TextStream";
    static std::span<const Member> Members();

private:
    CallOutcome AtEndOfStream(const CallArguments& arguments, Variant& result);
    CallOutcome AtEndOfLine(const CallArguments& arguments, Variant& result);
    CallOutcome Line(const CallArguments& arguments, Variant& result);
    CallOutcome Column(const CallArguments& arguments, Variant& result);
    // These fail where there is nothing more to read.
    CallOutcome Read(const CallArguments& arguments, Variant& result);
    CallOutcome ReadLine(const CallArguments& arguments, Variant& result);
    CallOutcome ReadAll(const CallArguments& arguments, Variant& result);
    CallOutcome Skip(const CallArguments& arguments, Variant& result);
    CallOutcome SkipLine(const CallArguments& arguments, Variant& result);
    CallOutcome Close(const CallArguments& arguments, Variant& result);

    StandardInput input_;
};

} // namespace tervane::scripthost
