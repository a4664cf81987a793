#include "support/MappedDrive.h"

#include "ZelBase/Handles.h"
#include "support/OtherWindows.h"

#include <cstddef>
#include <cstring>

#include <winioctl.h>

namespace tervane::test {
namespace {

// The request by which Wine's own configuration program maps a drive; no folder unmaps it.
struct DriveRequest {
    ULONG size;
    ULONG type;
    ULONG fileSystem;
    DWORD serial;
    ULONGLONG device;
    WCHAR letter;
    USHORT folderOffset;
    USHORT deviceOffset;
    USHORT labelOffset;
    char folder[8];
};

constexpr DWORD kDefineDrive =
    CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);

bool Define(char letter, UINT type, const char* folder) {
    const ZelBase::UniqueFile manager(
        CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    DriveRequest request = {};
    request.size = sizeof(request);
    request.type = type;
    request.letter = static_cast<WCHAR>(letter | 0x20);
    if (folder) {
        request.folderOffset = offsetof(DriveRequest, folder);
        std::strcpy(request.folder, folder);
    }
    DWORD answered = 0;
    return manager && DeviceIoControl(manager.Get(), kDefineDrive, &request, sizeof(request),
                                      nullptr, 0, &answered, nullptr);
}

} // namespace

MappedDrive::MappedDrive(char letter, UINT type) : letter_(letter) {
    const DWORD bit = 1U << (letter - 'A');
    mapped_ = IsWine() && !(GetLogicalDrives() & bit) && Define(letter, type, "/tmp");
}

MappedDrive::~MappedDrive() {
    if (mapped_) {
        Define(letter_, DRIVE_NO_ROOT_DIR, nullptr);
    }
}

} // namespace tervane::test
