#pragma once

// `WScript.StdOut` and `WScript.StdErr`.

#include "tools/script_host/Console.h"
#include "tools/script_host/NamedDispatch.h"

namespace tervane::scripthost {

class TextStream : public NamedDispatch<TextStream> {
public:
    static constexpr const wchar_t* kName = L"TextStream";
    static std::span<const Member> Members();

    explicit TextStream(Console::Stream stream) noexcept : stream_(stream) {}

private:
    CallOutcome Write(const CallArguments& arguments, Variant& result);
    // Without an argument an empty line.
    CallOutcome WriteLine(const CallArguments& arguments, Variant& result);
    CallOutcome WriteBlankLines(const CallArguments& arguments, Variant& result);
    // Does nothing: others write there, too.
    CallOutcome Close(const CallArguments& arguments, Variant& result);
    CallOutcome WriteText(const CallArguments& arguments, std::wstring_view lineEnd);

    const Console::Stream stream_;
};

} // namespace tervane::scripthost
