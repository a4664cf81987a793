#include "platform/NarrowText.h"

#include <windows.h>

#include <limits>

namespace tervane {
namespace {

bool IsTooLong(size_t length) noexcept {
    return length > static_cast<size_t>(std::numeric_limits<int>::max());
}

} // namespace

std::optional<std::string> ToNarrow(std::wstring_view text) {
    if (IsTooLong(text.size())) {
        return std::nullopt;
    }
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    // Not WC_NO_BEST_FIT_CHARS, which older systems refuse.
    return FromNarrow(narrow) == text ? std::optional(std::move(narrow)) : std::nullopt;
}

std::wstring FromNarrow(std::string_view text) {
    if (IsTooLong(text.size())) {
        return {};
    }
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), size);
    return wide;
}

} // namespace tervane
