#pragma once

// Which Windows this is, as coarsely as the system's behaviour depends on it: whatever differs
// between the 9x and the NT family, or between their releases, asks here.

#include <optional>

namespace tervane {

// The numbers stand for the releases everywhere, in diagnostic texts too.
enum class PlatformFamily {
    kWindows95 = 0,
    kWindows98 = 1,
    kWindowsMe = 2,
    kNt4 = 3,
    kWindows2000 = 4,
    // And whatever came after it.
    kXp = 5,
    kUnknown = 6,
};

// What the system says of its own version.
struct PlatformVersion {
    // 1 for the 9x family, 2 for the NT family.
    unsigned long platform = 0;
    unsigned long major = 0;
    unsigned long minor = 0;
};

// kUnknown for no version at all, and for a platform that is neither.
PlatformFamily ClassifyPlatform(const std::optional<PlatformVersion>& version) noexcept;

// The one that this process runs on.
PlatformFamily CurrentPlatformFamily() noexcept;

constexpr bool Is9xFamily(PlatformFamily family) noexcept {
    return family <= PlatformFamily::kWindowsMe;
}
constexpr bool IsNtFamily(PlatformFamily family) noexcept {
    return family >= PlatformFamily::kNt4 && family <= PlatformFamily::kXp;
}

} // namespace tervane
