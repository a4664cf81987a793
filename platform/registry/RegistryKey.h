#pragma once

// An open key of the registry. Every operation tries the wide-character function first and the
// narrow one when that fails, so that the same code runs on the 9x family, where the wide functions
// only fail. A name that the machine's code page cannot express is not tried the narrow way: it
// would become the name of another key or value.
//
// A key that could not be opened is an ordinary object in which nothing is found and nothing can be
// written, so callers need not ask before each read. Whatever the registry refuses leaves its
// reason in GetLastError; for a key that is not open, ERROR_INVALID_HANDLE.

#include "ZelBase/UniqueResource.h"
#include "platform/registry/RegistryText.h"

#include <windows.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

// The registry functions of Windows as a table, each in its wide and its narrow form. The wide ones
// exist on every system but only fail on the 9x family; a table whose wide entries fail is how
// tests become such a system.
struct RegistryApi {
    decltype(&RegOpenKeyExW) openKeyWide;
    decltype(&RegOpenKeyExA) openKeyNarrow;
    decltype(&RegCreateKeyExW) createKeyWide;
    decltype(&RegCreateKeyExA) createKeyNarrow;
    decltype(&RegDeleteKeyW) deleteKeyWide;
    decltype(&RegDeleteKeyA) deleteKeyNarrow;
    decltype(&RegEnumKeyExW) enumKeyWide;
    decltype(&RegEnumKeyExA) enumKeyNarrow;
    decltype(&RegEnumValueW) enumValueWide;
    decltype(&RegEnumValueA) enumValueNarrow;
    decltype(&RegQueryValueExW) queryValueWide;
    decltype(&RegQueryValueExA) queryValueNarrow;
    decltype(&RegSetValueExW) setValueWide;
    decltype(&RegSetValueExA) setValueNarrow;
    decltype(&RegDeleteValueW) deleteValueWide;
    decltype(&RegDeleteValueA) deleteValueNarrow;

    // The real ones.
    static const RegistryApi& System() noexcept;
};

struct RegistryKeyTraits {
    using Type = HKEY;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type key) noexcept { RegCloseKey(key); }
};
using UniqueRegistryKey = ZelBase::UniqueResource<RegistryKeyTraits>;

// The numbers are the ones that scripts use.
enum class RegistryHive : short {
    kClassesRoot = 0,
    kCurrentUser = 1,
    kLocalMachine = 2,
    kUsers = 3,
    // HKEY_PERFORMANCE_DATA lies between these two in Windows and has no number, on purpose.
    kCurrentConfig = 4,
    // What the 9x family knows of its devices while it runs; no hive for scripts.
    kDynamicData = 5,
};
// nullopt for a number that stands for no hive of scripts.
std::optional<RegistryHive> RegistryHiveOf(short number) noexcept;

// A value as it is stored, its text in wide characters.
struct RegistryValue {
    DWORD type = REG_NONE;
    RegistryBytes bytes;

    // What the value says; nullopt when it has another type.

    // REG_SZ and REG_EXPAND_SZ, environment variables not expanded.
    std::optional<std::wstring> Text() const;
    // REG_MULTI_SZ.
    std::optional<std::vector<std::wstring>> Texts() const;
    // REG_DWORD, and REG_BINARY of at most four bytes (missing high bytes are zero): drivers and
    // the 9x family store numbers that way.
    std::optional<DWORD> Number() const;
};

class RegistryKey {
public:
    // A key that is not open.
    RegistryKey() noexcept = default;

    // Opens an existing key; the empty path is the hive itself. Not open when there is none, or
    // when it does not grant `access`.
    static RegistryKey Open(RegistryHive hive, std::wstring_view path, REGSAM access = KEY_READ,
                            const RegistryApi& api = RegistryApi::System());
    // Opens the key and creates it, with all keys above it, where it is missing.
    static RegistryKey Create(RegistryHive hive, std::wstring_view path,
                              REGSAM access = KEY_READ | KEY_WRITE,
                              const RegistryApi& api = RegistryApi::System());
    // Deletes a key with its values. Refuses one that still has subkeys, so that no tree is lost by
    // mistake, and the hive itself.
    static bool Delete(RegistryHive hive, std::wstring_view path,
                       const RegistryApi& api = RegistryApi::System());
    RegistryKey OpenSubKey(std::wstring_view path, REGSAM access = KEY_READ) const;

    bool IsOpen() const noexcept { return static_cast<bool>(key_); }

    bool HasSubKeys() const;
    // In the registry's order. Empty when there is nothing to list, or the key is not open for it.
    std::vector<std::wstring> SubKeyNames() const;
    std::vector<std::wstring> ValueNames() const;

    // Below, the empty name is the key's default value; nullopt tells that there is no such value
    // or that it has another type than asked for.

    // One of the REG_ constants.
    std::optional<DWORD> TypeOf(std::wstring_view name) const;
    // Any value. What other programs change meanwhile is read before or after the change.
    std::optional<RegistryValue> Read(std::wstring_view name) const;
    // A text of any type or a number; nullopt also for other values that are long, which are not
    // read to their end just to be refused.
    std::optional<RegistryValue> ReadSetting(std::wstring_view name) const;
    // The setting by its type, as RegistryValue tells it.
    std::optional<std::wstring> ReadText(std::wstring_view name) const;
    std::optional<std::vector<std::wstring>> ReadTexts(std::wstring_view name) const;
    std::optional<DWORD> ReadNumber(std::wstring_view name) const;

    // Each replaces the value of any type; false leaves the old one. A text that contains a zero
    // character, or an empty text in a list, is refused: the registry could not give it back.
    bool WriteText(std::wstring_view name, std::wstring_view text) const;
    bool WriteExpandableText(std::wstring_view name, std::wstring_view text) const;
    bool WriteTexts(std::wstring_view name, std::span<const std::wstring> texts) const;
    bool WriteNumber(std::wstring_view name, DWORD number) const;
    bool WriteBytes(std::wstring_view name, std::span<const unsigned char> bytes) const;
    // False when there is no such value.
    bool DeleteValue(std::wstring_view name) const;

private:
    RegistryKey(UniqueRegistryKey key, const RegistryApi& api) noexcept
        : key_(std::move(key)), api_(&api) {}

    enum class LongValues { kRead, kReadTexts };
    std::optional<RegistryValue> Query(std::wstring_view name, LongValues wanted) const;
    bool Write(std::wstring_view name, const RegistryValue& value) const;

    UniqueRegistryKey key_;
    const RegistryApi* api_ = &RegistryApi::System();
};

} // namespace tervane
