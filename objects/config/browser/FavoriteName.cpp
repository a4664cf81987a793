#include "objects/config/browser/FavoriteName.h"

#include "platform/text/LetterCase.h"

#include <algorithm>

namespace tervane {
namespace {

constexpr std::size_t kLongestFileName = 255;

bool IsControl(wchar_t letter) noexcept {
    return letter < L' ' || letter == 0x7F;
}

bool IsForbidden(wchar_t letter) noexcept {
    constexpr std::wstring_view kForbidden = L"\\/:*?\"<>|";
    return IsControl(letter) || kForbidden.find(letter) != std::wstring_view::npos;
}

// COM1 to COM9 and LPT1 to LPT9. Windows counts superscript digits among the digits.
bool IsPort(std::wstring_view name) noexcept {
    constexpr std::wstring_view kDigits = L"123456789\u00B9\u00B2\u00B3";
    return name.size() == 4 &&
           (StartsIgnoringAsciiCase(name, L"COM") || StartsIgnoringAsciiCase(name, L"LPT")) &&
           kDigits.find(name[3]) != std::wstring_view::npos;
}

// A device answers to its name with any extension, "NUL.URL" for instance.
bool NamesDevice(std::wstring_view name) noexcept {
    constexpr std::wstring_view kDevices[] = {L"CON",    L"PRN",     L"AUX",   L"NUL",
                                              L"CONIN$", L"CONOUT$", L"CLOCK$"};
    std::wstring_view stem = name.substr(0, name.find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    return IsPort(stem) ||
           std::any_of(std::begin(kDevices), std::end(kDevices), [stem](std::wstring_view device) {
               return EqualsIgnoringAsciiCase(stem, device);
           });
}

} // namespace

bool IsFavoriteName(std::wstring_view name) noexcept {
    return name.find_first_not_of(L" .") != std::wstring_view::npos &&
           name.size() <= kLongestFileName - kFavoriteExtension.size() &&
           std::none_of(name.begin(), name.end(), IsForbidden) && !NamesDevice(name);
}

bool IsFavoriteUrl(std::wstring_view url) noexcept {
    return !url.empty() && url.front() != L' ' && url.back() != L' ' &&
           std::none_of(url.begin(), url.end(), IsControl);
}

} // namespace tervane
