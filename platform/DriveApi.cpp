#include "platform/DriveApi.h"

#include "platform/OptionalLibrary.h"

namespace tervane {

const DriveApi& DriveApi::System() noexcept {
    // Kept for as long as the function may be called.
    static const OptionalLibrary kernel(L"Kernel32.dll");
    static const DriveApi api = {
        &GetDriveTypeA,
        kernel.Find<decltype(&GetDiskFreeSpaceExA)>("GetDiskFreeSpaceExA"),
        &GetDiskFreeSpaceA,
        &GetWindowsDirectoryA,
    };
    return api;
}

} // namespace tervane
