#include "objects/config/browser/LocalBypass.h"

#include "platform/text/AsciiText.h"

namespace tervane {

bool HasLocalBypass(std::wstring_view list) noexcept {
    return FindIgnoringCase(list, kLocalBypass) != std::wstring_view::npos;
}

std::wstring WithLocalBypass(std::wstring_view list) {
    std::wstring with(list);
    if (!HasLocalBypass(list)) {
        with += list.empty() ? L"" : L";";
        with += kLocalBypass;
    }
    return with;
}

std::wstring WithoutLocalBypass(std::wstring_view list) {
    const size_t marker = FindIgnoringCase(list, kLocalBypass);
    if (marker == std::wstring_view::npos) {
        return std::wstring(list);
    }
    // Together with the semicolon before it.
    return std::wstring(list.substr(0, marker == 0 ? 0 : marker - 1));
}

std::wstring WithExceptions(std::wstring_view list, std::wstring_view exceptions) {
    return HasLocalBypass(list) ? WithLocalBypass(exceptions) : std::wstring(exceptions);
}

} // namespace tervane
