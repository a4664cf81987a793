#pragma once

// The system's functions about drives, as a table: tests put drives of their own here.

#include <windows.h>

namespace tervane {

struct DriveApi {
    decltype(&GetDriveTypeA) getDriveType;
    // Null where the system lacks it, as the first Windows 95 does.
    decltype(&GetDiskFreeSpaceExA) getDiskFreeSpaceEx;
    decltype(&GetDiskFreeSpaceA) getDiskFreeSpace;
    decltype(&GetWindowsDirectoryA) getWindowsDirectory;

    // The real ones.
    static const DriveApi& System() noexcept;
};

} // namespace tervane
