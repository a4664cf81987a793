#include "tools/script_host/TextStream.h"

namespace tervane::scripthost {

std::span<const TextStream::Member> TextStream::Members() {
    static constexpr Member kMembers[] = {
        {L"Write", 1, kMethod, &TextStream::Write},
        {L"WriteLine", 2, kMethod, &TextStream::WriteLine},
        {L"WriteBlankLines", 3, kMethod, &TextStream::WriteBlankLines},
        {L"Close", 4, kMethod, &TextStream::Close},
    };
    return kMembers;
}

CallOutcome TextStream::Write(const CallArguments& arguments, Variant&) {
    if (arguments.Count() != 1) {
        return {E_INVALIDARG, L"One text is needed."};
    }
    return WriteText(arguments, L"");
}

CallOutcome TextStream::WriteLine(const CallArguments& arguments, Variant&) {
    if (arguments.Count() > 1) {
        return {E_INVALIDARG, L"At most one text is needed."};
    }
    return WriteText(arguments, L"\r\n");
}

CallOutcome TextStream::WriteBlankLines(const CallArguments& arguments, Variant&) {
    const std::optional<LONG> count = arguments.Number(0);
    if (arguments.Count() != 1 || !count || *count < 0) {
        return {E_INVALIDARG, L"A number of lines is needed."};
    }
    HRESULT result = S_OK;
    for (LONG i = 0; i < *count && SUCCEEDED(result); ++i) {
        result = Console::WriteLine(stream_, L"");
    }
    return {result, {}};
}

CallOutcome TextStream::Close(const CallArguments&, Variant&) {
    return {};
}

CallOutcome TextStream::WriteText(const CallArguments& arguments, std::wstring_view lineEnd) {
    std::optional<std::wstring> text = arguments.Has(0) ? arguments.Text(0) : L"";
    if (!text) {
        return {DISP_E_TYPEMISMATCH, L"The value has no text form."};
    }
    return {Console::Write(stream_, *text += lineEnd), {}};
}

} // namespace tervane::scripthost
