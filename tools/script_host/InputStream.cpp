#include "tools/script_host/InputStream.h"

namespace tervane::scripthost {
namespace {

// The number that both script languages give this error.
constexpr HRESULT kPastEnd = static_cast<HRESULT>(0x800A003E);

CallOutcome PastEnd() {
    return {kPastEnd, L"Input past end of file"};
}

CallOutcome ReturnText(const std::wstring& text, Variant& result) {
    std::optional<Variant> value = Variant::FromText(text);
    if (!value) {
        return {E_OUTOFMEMORY, {}};
    }
    result = *std::move(value);
    return {};
}

} // namespace

std::span<const InputStream::Member> InputStream::Members() {
    using Self = InputStream;
    static constexpr Member kMembers[] = {
        {L"AtEndOfStream", 1, kProperty, &Self::AtEndOfStream},
        {L"AtEndOfLine", 2, kProperty, &Self::AtEndOfLine},
        {L"Line", 3, kProperty, &Self::Line},
        {L"Column", 4, kProperty, &Self::Column},
        {L"Read", 5, kMethod, &Self::Read},
        {L"ReadLine", 6, kMethod, &Self::ReadLine},
        {L"ReadAll", 7, kMethod, &Self::ReadAll},
        {L"Skip", 8, kMethod, &Self::Skip},
        {L"SkipLine", 9, kMethod, &Self::SkipLine},
        {L"Close", 10, kMethod, &Self::Close},
    };
    return kMembers;
}

CallOutcome InputStream::AtEndOfStream(const CallArguments&, Variant& result) {
    result = Variant::FromBool(!input_.HasMore());
    return {};
}

CallOutcome InputStream::AtEndOfLine(const CallArguments&, Variant& result) {
    result = Variant::FromBool(input_.IsAtLineEnd());
    return {};
}

CallOutcome InputStream::Line(const CallArguments&, Variant& result) {
    result = Variant::FromLong(input_.Line());
    return {};
}

CallOutcome InputStream::Column(const CallArguments&, Variant& result) {
    result = Variant::FromLong(input_.Column());
    return {};
}

CallOutcome InputStream::Read(const CallArguments& arguments, Variant& result) {
    const std::optional<LONG> count = arguments.Number(0);
    if (arguments.Count() != 1 || !count || *count < 0) {
        return {E_INVALIDARG, L"A number of characters is needed."};
    }
    return input_.HasMore() ? ReturnText(input_.Take(static_cast<std::size_t>(*count)), result)
                            : PastEnd();
}

CallOutcome InputStream::ReadLine(const CallArguments&, Variant& result) {
    return input_.HasMore() ? ReturnText(input_.TakeLine(), result) : PastEnd();
}

CallOutcome InputStream::ReadAll(const CallArguments&, Variant& result) {
    return input_.HasMore() ? ReturnText(input_.TakeAll(), result) : PastEnd();
}

CallOutcome InputStream::Skip(const CallArguments& arguments, Variant&) {
    Variant skipped;
    return Read(arguments, skipped);
}

CallOutcome InputStream::SkipLine(const CallArguments& arguments, Variant&) {
    Variant skipped;
    return ReadLine(arguments, skipped);
}

CallOutcome InputStream::Close(const CallArguments&, Variant&) {
    input_.Close();
    return {};
}

} // namespace tervane::scripthost
