#include "objects/sysinfo/Drives.h"

#include "ZelBase/SystemLibrary.h"

#include <cctype>
#include <iterator>

namespace tervane {
namespace {

constexpr DWORD kNoBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

// Since Windows 7.
using SetThreadMode = BOOL(WINAPI*)(DWORD mode, DWORD* before);

SetThreadMode ThreadMode() noexcept {
    static const auto function = reinterpret_cast<SetThreadMode>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "SetThreadErrorMode")));
    return function;
}

} // namespace

QuietErrors::QuietErrors() noexcept {
    if (ThreadMode()) {
        ThreadMode()(kNoBoxes, &before_);
    } else {
        before_ = SetErrorMode(kNoBoxes);
    }
}

QuietErrors::~QuietErrors() {
    if (ThreadMode()) {
        ThreadMode()(before_, nullptr);
    } else {
        SetErrorMode(before_);
    }
}

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

namespace {

// What every call names a drive by: "C:\".
class RootPath {
public:
    explicit RootPath(char letter) noexcept : text_{letter, ':', '\\', 0} {}
    const char* Get() const noexcept { return std::data(text_); }

private:
    char text_[4];
};

ByteCount Halves(std::uint64_t bytes) noexcept {
    return {static_cast<std::uint32_t>(bytes >> 32), static_cast<std::uint32_t>(bytes)};
}

DriveSpace InMegabytes(std::uint64_t total, std::uint64_t free) noexcept {
    return {InUnit(Halves(total), SizeUnit::kMegabytes),
            InUnit(Halves(free), SizeUnit::kMegabytes)};
}

} // namespace

const wchar_t* DriveClassText(DriveClass driveClass) noexcept {
    static const wchar_t* const kTexts[] = {
        L"HARD_DRIVE", L"CDROM_DRIVE", L"REMOVABLE_DRIVE", L"FLOPPY_DRIVE", L"NET_DRIVE", L"ERROR",
    };
    return kTexts[static_cast<int>(driveClass)];
}

DriveClass Drives::ClassOf(char letter) const noexcept {
    switch (TypeOf(letter)) {
    case DRIVE_FIXED:
        return DriveClass::kHardDrive;
    case DRIVE_CDROM:
        return DriveClass::kCdrom;
    case DRIVE_REMOVABLE:
        return IsFirstRemovable(letter) ? DriveClass::kFloppy : DriveClass::kRemovable;
    case DRIVE_REMOTE:
        return DriveClass::kNet;
    case DRIVE_NO_ROOT_DIR:
        // Some drivers give a disk no root but a size.
        return SpaceOf(letter).total > 0 ? DriveClass::kHardDrive : DriveClass::kError;
    default:
        return DriveClass::kError;
    }
}

DriveSpace Drives::SpaceOf(char letter) const noexcept {
    const QuietErrors quiet; // the drive may be empty
    const RootPath root(letter);
    if (api_.getDiskFreeSpaceEx) {
        ULARGE_INTEGER available = {};
        ULARGE_INTEGER total = {};
        return api_.getDiskFreeSpaceEx(root.Get(), &available, &total, nullptr)
                   ? InMegabytes(total.QuadPart, available.QuadPart)
                   : DriveSpace();
    }
    DWORD sectorsPerCluster = 0;
    DWORD bytesPerSector = 0;
    DWORD freeClusters = 0;
    DWORD clusters = 0;
    if (!api_.getDiskFreeSpace(root.Get(), &sectorsPerCluster, &bytesPerSector, &freeClusters,
                               &clusters)) {
        return {};
    }
    const std::uint64_t clusterSize = std::uint64_t{sectorsPerCluster} * bytesPerSector;
    return InMegabytes(clusterSize * clusters, clusterSize * freeClusters);
}

std::string Drives::Letters() const {
    std::string letters;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (ClassOf(letter) != DriveClass::kError) {
            letters.push_back(letter);
        }
    }
    return letters;
}

char Drives::SystemLetter() const noexcept {
    char folder[MAX_PATH] = {};
    const UINT length = api_.getWindowsDirectory(std::data(folder), std::size(folder));
    return length == 0 || length >= std::size(folder)
               ? '\0'
               : static_cast<char>(std::toupper(static_cast<unsigned char>(folder[0])));
}

UINT Drives::TypeOf(char letter) const noexcept {
    UINT& type = types_[static_cast<std::size_t>(letter - 'A')];
    if (type == kNotAsked) {
        type = api_.getDriveType(RootPath(letter).Get());
    }
    return type;
}

bool Drives::IsFirstRemovable(char letter) const noexcept {
    for (char earlier = 'A'; earlier < letter; ++earlier) {
        if (TypeOf(earlier) == DRIVE_REMOVABLE) {
            return false;
        }
    }
    return true;
}

namespace {

void FillSystemDrive(const Drives& drives, SystemSnapshot& snapshot) noexcept {
    const char letter = drives.SystemLetter();
    if (letter == '\0') {
        return;
    }
    const DriveSpace space = drives.SpaceOf(letter);
    snapshot.systemDriveFreeSpace = ToScriptNumber(space.free);
    const std::size_t place = snapshot.driveLetters.find(letter);
    if (place != std::string::npos) {
        snapshot.systemDriveIndex = static_cast<long>(place);
        snapshot.systemDriveTotalSize = ToScriptNumber(space.total);
    }
}

void FillLargestFreeDrive(const Drives& drives, SystemSnapshot& snapshot) noexcept {
    for (std::size_t place = 0; place < snapshot.driveLetters.size(); ++place) {
        const char letter = snapshot.driveLetters[place];
        if (drives.ClassOf(letter) != DriveClass::kHardDrive) {
            continue;
        }
        const long free = ToScriptNumber(drives.SpaceOf(letter).free);
        if (free > snapshot.largestFreeDriveSpace) {
            snapshot.largestFreeDriveSpace = free;
            snapshot.largestFreeDriveIndex = static_cast<long>(place);
        }
    }
}

} // namespace

void FillDriveFigures(const Drives& drives, SystemSnapshot& snapshot) noexcept {
    FillSystemDrive(drives, snapshot);
    FillLargestFreeDrive(drives, snapshot);
}

} // namespace tervane
