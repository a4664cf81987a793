// Apart from the classification, which knows no Windows.

#include "platform/PlatformFamily.h"

#include <windows.h>

namespace tervane {

PlatformFamily CurrentPlatformFamily() noexcept {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    static_assert(sizeof(version) == 148, "the record that every release knows");
    if (!GetVersionExA(&version)) {
        return ClassifyPlatform(std::nullopt);
    }
    return ClassifyPlatform(
        PlatformVersion{version.dwPlatformId, version.dwMajorVersion, version.dwMinorVersion});
}

} // namespace tervane
