#include "objects/sysinfo/DriveFigures.h"

namespace tervane {
namespace {

void FillSystemDrive(const Drives& drives, SystemSnapshot& snapshot) noexcept {
    const char letter = drives.SystemLetter();
    if (letter == '\0') {
        return;
    }
    const DriveSpace space = drives.SpaceOf(letter);
    snapshot.systemDriveFreeSpace = ToScriptNumber(space.free);
    const size_t place = snapshot.driveLetters.find(letter);
    if (place != std::string::npos) {
        snapshot.systemDriveIndex = static_cast<long>(place);
        snapshot.systemDriveTotalSize = ToScriptNumber(space.total);
    }
}

void FillLargestFreeDrive(const Drives& drives, SystemSnapshot& snapshot) noexcept {
    for (size_t place = 0; place < snapshot.driveLetters.size(); ++place) {
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
