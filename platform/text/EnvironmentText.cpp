#include "platform/text/EnvironmentText.h"

#include <windows.h>

namespace tervane {

std::wstring ExpandEnvironment(const std::wstring& text) {
    std::wstring expanded(MAX_PATH, L'\0');
    for (;;) {
        const auto size = static_cast<DWORD>(expanded.size());
        // The length counts the terminator, and is the one needed when the place is too short.
        const DWORD length = ExpandEnvironmentStringsW(text.c_str(), expanded.data(), size);
        if (length == 0) {
            return text;
        }
        expanded.resize(length);
        if (length <= size) {
            expanded.pop_back();
            return expanded;
        }
    }
}

} // namespace tervane
