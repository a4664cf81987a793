#pragma once

// The drives that have a letter: what kind each is and how much fits on it. Every answer is the
// system's of that moment; a drive that is gone is kError and has no space.

#include "objects/sysinfo/SystemSnapshot.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <string>

namespace tervane {

// While it lives, the system fails a call where it would otherwise show a box and wait for the user
// to put a disk into a drive: whoever looks at all drives must not stop at an empty one. Where the
// system can, this is limited to the calling thread; otherwise it holds for the process.
class QuietErrors {
public:
    QuietErrors() noexcept;
    ~QuietErrors();
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    DWORD before_ = 0;
};

// The system's functions about drives, as a table: tests put drives of their own here.
struct DriveApi {
    decltype(&GetDriveTypeA) getDriveType;
    // Null where the system lacks it, as the first Windows 95 does.
    decltype(&GetDiskFreeSpaceExA) getDiskFreeSpaceEx;
    decltype(&GetDiskFreeSpaceA) getDiskFreeSpace;
    decltype(&GetWindowsDirectoryA) getWindowsDirectory;

    // The real ones.
    static const DriveApi& System() noexcept;
};

// Sizes of drives in the units that scripts are told them in.

// A number of bytes, as the system gives it in two halves.
struct ByteCount {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
};

// The numbers are the bytes in one unit.
enum class SizeUnit : std::uint32_t {
    kBytes = 1,
    kKilobytes = 1024,
    kMegabytes = 1048576,
    kGigabytes = 1073741824,
};

// Deliberately an approximation: each 4 GB of the high half count as one unit too few (4095 MB, not
// 4096), and what exceeds 4 GB - 1 in bytes is 4 GB - 1. Support staff compare these figures with
// those in their records, which were made this way.
constexpr std::uint64_t InUnit(ByteCount bytes, SizeUnit unit) noexcept {
    constexpr std::uint32_t kMost = 4294967295;
    if (unit == SizeUnit::kBytes) {
        return bytes.high != 0 ? kMost : bytes.low;
    }
    const auto divisor = static_cast<std::uint32_t>(unit);
    return bytes.low / divisor + std::uint64_t{bytes.high} * (kMost / divisor);
}

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

// Letters are capitals. What type a drive has is asked once. One thread at a time; a function that
// asks a drive about its space waits as long as the drive does.
class Drives {
public:
    explicit Drives(const DriveApi& api = DriveApi::System()) noexcept : api_(api) {
        types_.fill(kNotAsked);
    }

    DriveClass ClassOf(char letter) const noexcept;
    DriveSpace SpaceOf(char letter) const noexcept;
    // The letters from "A" to "Z" whose class is not kError, in that order.
    std::string Letters() const;
    // The letter of the drive that holds Windows; 0 when the system does not tell.
    char SystemLetter() const noexcept;

private:
    UINT TypeOf(char letter) const noexcept;
    bool IsFirstRemovable(char letter) const noexcept;

    static constexpr UINT kNotAsked = ~0u;

    const DriveApi& api_;
    mutable std::array<UINT, 'Z' - 'A' + 1> types_;
};

// The figures of the drives in a snapshot.

// Fills the figures about drives; `snapshot` has its driveLetters.
void FillDriveFigures(const Drives& drives, SystemSnapshot& snapshot) noexcept;

} // namespace tervane
