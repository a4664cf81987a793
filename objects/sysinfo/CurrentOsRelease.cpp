// Apart from the classification, which knows no Windows.

#include "objects/sysinfo/OsRelease.h"

#include <cstring>
#include <iterator>

#include <windows.h>

namespace tervane {

std::optional<VersionRecord> CurrentVersion() {
    // Older systems know the first part of the record only, and refuse the whole by its size.
    OSVERSIONINFOEXA record = {};
    static_assert(sizeof(OSVERSIONINFOEXA) == 156 && sizeof(OSVERSIONINFOA) == 148);
    auto* version = reinterpret_cast<OSVERSIONINFOA*>(&record);
    record.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXA);
    if (!GetVersionExA(version)) {
        record.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        if (!GetVersionExA(version)) {
            return std::nullopt;
        }
    }
    const char* text = std::data(record.szCSDVersion);
    return VersionRecord{
        record.dwPlatformId,   record.dwMajorVersion,
        record.dwMinorVersion, std::string(text, strnlen(text, std::size(record.szCSDVersion))),
        record.wSuiteMask,     record.wProductType};
}

} // namespace tervane
