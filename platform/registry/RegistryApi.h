#pragma once

// The registry functions of Windows as a table, each in its wide and its narrow form. The wide ones
// exist on every system but only fail on the 9x family; a table whose wide entries fail is how
// tests become such a system.

#include <windows.h>

namespace tervane {

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

} // namespace tervane
