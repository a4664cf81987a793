#pragma once

// The drives that have a letter: what kind each is and how much fits on it. Every answer is the
// system's of that moment; a drive that is gone is kError and has no space.

#include "objects/sysinfo/DriveApi.h"

#include <cstdint>
#include <string>

namespace tervane {

enum class DriveClass {
    kHardDrive = 0,
    kCdrom = 1,
    kRemovable = 2,
    // The first removable drive, whatever it is in truth; no other is called so.
    kFloppy = 3,
    kNet = 4,
    // What has no name here, such as RAM disks, and what is no drive.
    kError = 5,
};

// The text that scripts see, such as "HARD_DRIVE".
const wchar_t* DriveClassText(DriveClass driveClass) noexcept;

// In MB; 0 for what the system does not tell.
struct DriveSpace {
    std::uint64_t total = 0;
    // Available to this user.
    std::uint64_t free = 0;
};

// Letters are capitals. All functions may be called on any thread; one that asks a drive about its
// space waits as long as the drive does.
class Drives {
public:
    explicit Drives(const DriveApi& api = DriveApi::System()) noexcept : api_(api) {}

    DriveClass ClassOf(char letter) const noexcept;
    DriveSpace SpaceOf(char letter) const noexcept;
    // The letters from "A" to "Z" whose class is not kError, in that order.
    std::string Letters() const;
    // The letter of the drive that holds Windows; 0 when the system does not tell.
    char SystemLetter() const noexcept;

private:
    UINT TypeOf(char letter) const noexcept;
    bool IsFirstRemovable(char letter) const noexcept;

    const DriveApi& api_;
};

} // namespace tervane
