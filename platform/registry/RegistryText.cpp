#include "platform/registry/RegistryText.h"

#include <algorithm>

namespace tervane {

// A character is two bytes, the lower one first.
std::wstring DecodeRegistryCharacters(std::span<const unsigned char> bytes) {
    std::wstring characters(bytes.size() / 2, L'\0');
    for (std::size_t i = 0; i < characters.size(); ++i) {
        characters[i] = static_cast<wchar_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    }
    return characters;
}

RegistryBytes EncodeRegistryCharacters(std::wstring_view characters) {
    RegistryBytes bytes;
    bytes.reserve(2 * characters.size());
    for (wchar_t character : characters) {
        bytes.push_back(static_cast<unsigned char>(character & 0xFF));
        bytes.push_back(static_cast<unsigned char>(character >> 8 & 0xFF));
    }
    return bytes;
}

std::wstring DecodeRegistryText(std::span<const unsigned char> bytes) {
    std::wstring text = DecodeRegistryCharacters(bytes);
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
}

std::vector<std::wstring> DecodeRegistryTexts(std::span<const unsigned char> bytes) {
    const std::wstring all = DecodeRegistryCharacters(bytes);
    std::vector<std::wstring> texts;
    if (all.find_first_not_of(L'\0') == std::wstring::npos) {
        return texts;
    }
    for (std::size_t start = 0; start < all.size();) {
        const std::size_t end = std::min(all.find(L'\0', start), all.size());
        const bool endsList = end == start && end + 1 == all.size();
        if (!endsList) {
            texts.push_back(all.substr(start, end - start));
        }
        start = end + 1;
    }
    return texts;
}

RegistryBytes EncodeRegistryText(std::wstring_view text) {
    return EncodeRegistryCharacters(std::wstring(text) + L'\0');
}

RegistryBytes EncodeRegistryTexts(std::span<const std::wstring> texts) {
    std::wstring all;
    for (const std::wstring& text : texts) {
        all += text;
        all += L'\0';
    }
    all += L'\0';
    return EncodeRegistryCharacters(all);
}

} // namespace tervane
