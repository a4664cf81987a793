#include "tools/script_host/script/Encoding.h"

namespace tervane::scripthost {

std::optional<std::wstring> FromCodePage(UINT codePage, std::string_view bytes) {
    if (bytes.empty()) {
        return std::wstring();
    }
    int length = static_cast<int>(bytes.size());
    int size =
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
    if (size == 0) {
        return std::nullopt;
    }
    std::wstring text(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, 0, bytes.data(), length, text.data(), size);
    return text;
}

} // namespace tervane::scripthost
