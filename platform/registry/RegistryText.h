#pragma once

// The bytes of the registry's text values. What is stored is whatever some program wrote: the
// terminator may be missing, or doubled, and the last character may be cut in half.

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

using RegistryBytes = std::vector<unsigned char>;

// All characters as they stand, terminators included; half a character at the end is dropped.
std::wstring DecodeRegistryCharacters(std::span<const unsigned char> bytes);
RegistryBytes EncodeRegistryCharacters(std::wstring_view characters);

// The text up to its terminator, or to its end when there is none.
std::wstring DecodeRegistryText(std::span<const unsigned char> bytes);
// The texts of a list in their order. Empty ones between others are kept, because programs do store
// them; the one that ends the list is not part of it. A list of nothing but terminators is empty.
std::vector<std::wstring> DecodeRegistryTexts(std::span<const unsigned char> bytes);

// With the terminator. `text` must not contain a zero character.
RegistryBytes EncodeRegistryText(std::wstring_view text);
// With the terminators. No text may be empty or contain a zero character: either would end the text
// or the list for whoever reads it.
RegistryBytes EncodeRegistryTexts(std::span<const std::wstring> texts);

} // namespace tervane
