#include "platform/PlatformFamily.h"

#include <windows.h>

namespace tervane {
namespace {

constexpr unsigned long kPlatform9x = 1;
constexpr unsigned long kPlatformNt = 2;

} // namespace

PlatformFamily ClassifyPlatform(const std::optional<PlatformVersion>& version) noexcept {
    const PlatformVersion known = version.value_or(PlatformVersion());
    switch (known.platform) {
    case kPlatform9x:
        if (known.minor == 0) {
            return PlatformFamily::kWindows95;
        }
        return known.minor <= 10 ? PlatformFamily::kWindows98 : PlatformFamily::kWindowsMe;
    case kPlatformNt:
        if (known.major <= 4) {
            return PlatformFamily::kNt4;
        }
        return known.minor == 0 ? PlatformFamily::kWindows2000 : PlatformFamily::kXp;
    default:
        return PlatformFamily::kUnknown;
    }
}

} // namespace tervane

// Apart from the classification, which knows no Windows.
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
