#pragma once

// A drive that exists for the time of a test. Only Wine can make one of any type out of a folder.

#include "ZelBase/Handles.h"
#include "support/OtherWindows.h"

#include <cstddef>
#include <cstring>

#include <windows.h>

#include <winioctl.h>

namespace tervane::test {

class MappedDrive {
public:
    // One of the DRIVE_ types; its root is the machine's folder for temporary files.
    MappedDrive(char letter, UINT type) : letter_(letter) {
        const DWORD bit = 1U << (letter - 'A');
        mapped_ = IsWine() && !(GetLogicalDrives() & bit) && Define(type, "/tmp");
    }
    ~MappedDrive() {
        if (mapped_) {
            Define(DRIVE_NO_ROOT_DIR, nullptr);
        }
    }
    MappedDrive(const MappedDrive&) = delete;
    MappedDrive& operator=(const MappedDrive&) = delete;

    // False when the letter was taken, or the system is not Wine.
    bool IsMapped() const { return mapped_; }

private:
    // The request by which Wine's own configuration program maps a drive; no folder unmaps it.
    struct Request {
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

    bool Define(UINT type, const char* folder) const {
        constexpr DWORD kDefineDrive =
            CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);
        const ZelBase::UniqueFile manager(
            CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        Request request = {};
        request.size = sizeof(request);
        request.type = type;
        request.letter = static_cast<WCHAR>(letter_ | 0x20);
        if (folder) {
            request.folderOffset = offsetof(Request, folder);
            std::strcpy(request.folder, folder);
        }
        DWORD answered = 0;
        return manager && DeviceIoControl(manager.Get(), kDefineDrive, &request, sizeof(request),
                                          nullptr, 0, &answered, nullptr);
    }

    char letter_;
    bool mapped_ = false;
};

} // namespace tervane::test
