#include "objects/sysinfo/DriveApi.h"

#include "ZelBase/SystemLibrary.h"

namespace tervane {

const DriveApi& DriveApi::System() noexcept {
    // Kept for as long as the function may be called.
    static const ZelBase::SystemLibrary kernel("Kernel32.dll");
    static const DriveApi api = {
        &GetDriveTypeA,
        kernel.Find<decltype(&GetDiskFreeSpaceExA)>("GetDiskFreeSpaceExA"),
        &GetDiskFreeSpaceA,
        &GetWindowsDirectoryA,
    };
    return api;
}

} // namespace tervane
