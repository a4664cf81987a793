#pragma once

// Settings that Windows' releases store in different types: lists of addresses as one text with
// commas or blanks between them or as a list of texts, switches as numbers or as texts.

#include "platform/registry/RegistryKey.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

// The parts of a text between commas, semicolons and white space; no empty ones.
std::vector<std::wstring> SplitList(std::wstring_view text);
// The same of a value of any text type; none for any other.
std::vector<std::wstring> ReadList(const RegistryKey& key, std::wstring_view name);
// What Windows stores, and scripts are told, where there is no address.
inline constexpr wchar_t kNoAddress[] = L"0.0.0.0";
// The first of a list of addresses, kNoAddress when there is none.
std::wstring ReadFirstAddress(const RegistryKey& key, std::wstring_view name);

// A text that is not empty, otherwise `fallback`.
std::wstring ReadTextOr(const RegistryKey& key, std::wstring_view name,
                        std::wstring fallback = L"");

// A number, or a text of decimal digits; nullopt for anything else.
std::optional<DWORD> ReadSwitch(const RegistryKey& key, std::wstring_view name);

} // namespace tervane
