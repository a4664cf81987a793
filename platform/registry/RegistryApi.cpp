#include "platform/registry/RegistryApi.h"

namespace tervane {

const RegistryApi& RegistryApi::System() noexcept {
    static const RegistryApi system = {
        .openKeyWide = RegOpenKeyExW,
        .openKeyNarrow = RegOpenKeyExA,
        .createKeyWide = RegCreateKeyExW,
        .createKeyNarrow = RegCreateKeyExA,
        .deleteKeyWide = RegDeleteKeyW,
        .deleteKeyNarrow = RegDeleteKeyA,
        .enumKeyWide = RegEnumKeyExW,
        .enumKeyNarrow = RegEnumKeyExA,
        .enumValueWide = RegEnumValueW,
        .enumValueNarrow = RegEnumValueA,
        .queryValueWide = RegQueryValueExW,
        .queryValueNarrow = RegQueryValueExA,
        .setValueWide = RegSetValueExW,
        .setValueNarrow = RegSetValueExA,
        .deleteValueWide = RegDeleteValueW,
        .deleteValueNarrow = RegDeleteValueA,
    };
    return system;
}

} // namespace tervane
