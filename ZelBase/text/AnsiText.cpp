#include "ZelBase/text/AnsiText.h"

#include <algorithm>
#include <climits>

#include <windows.h>

namespace ZelBase {
namespace {

// Longer texts are cut where the system's functions can no longer count.
int CountFor(std::size_t length) noexcept {
    return static_cast<int>(std::min<std::size_t>(length, INT_MAX));
}

} // namespace

std::string WideToAnsi(std::wstring_view text) {
    const int length = CountFor(text.size());
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, out.data(), size, nullptr, nullptr);
    return out;
}

std::wstring AnsiToWide(std::string_view text) {
    const int length = CountFor(text.size());
    const int size = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring out(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, out.data(), size);
    return out;
}

} // namespace ZelBase
