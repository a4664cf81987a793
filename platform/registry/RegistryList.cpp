#include "platform/registry/RegistryList.h"

#include <algorithm>
#include <utility>

namespace tervane {
namespace {

constexpr std::wstring_view kSeparators = L",; \t\r\n";
constexpr std::size_t kMostDigits = 9; // whatever is longer may not fit

void AppendParts(std::wstring_view text, std::vector<std::wstring>& parts) {
    for (std::size_t begin = text.find_first_not_of(kSeparators); begin < text.size();) {
        const std::size_t end = std::min(text.find_first_of(kSeparators, begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(kSeparators, end);
    }
}

} // namespace

std::vector<std::wstring> SplitList(std::wstring_view text) {
    std::vector<std::wstring> parts;
    AppendParts(text, parts);
    return parts;
}

std::vector<std::wstring> ReadList(const RegistryKey& key, std::wstring_view name) {
    const std::optional<RegistryValue> value = key.ReadSetting(name);
    std::vector<std::wstring> parts;
    if (!value) {
        return parts;
    }
    if (const auto texts = value->Texts()) {
        for (const std::wstring& text : *texts) {
            AppendParts(text, parts);
        }
    } else if (const auto text = value->Text()) {
        AppendParts(*text, parts);
    }
    return parts;
}

std::wstring ReadFirstAddress(const RegistryKey& key, std::wstring_view name) {
    const std::vector<std::wstring> addresses = ReadList(key, name);
    return addresses.empty() ? std::wstring(kNoAddress) : addresses.front();
}

std::wstring ReadTextOr(const RegistryKey& key, std::wstring_view name, std::wstring fallback) {
    std::optional<std::wstring> text = key.ReadText(name);
    return text && !text->empty() ? std::move(*text) : std::move(fallback);
}

std::optional<DWORD> ReadSwitch(const RegistryKey& key, std::wstring_view name) {
    const std::optional<RegistryValue> value = key.ReadSetting(name);
    if (const auto number = value ? value->Number() : std::nullopt) {
        return number;
    }
    const std::optional<std::wstring> text = value ? value->Text() : std::nullopt;
    const bool isNumber = text && !text->empty() && text->size() <= kMostDigits &&
                          text->find_first_not_of(L"0123456789") == std::wstring::npos;
    return isNumber ? std::optional(static_cast<DWORD>(std::stoul(*text))) : std::nullopt;
}

} // namespace tervane
