// Drives: the arithmetic of their sizes, drives as a table, what a snapshot makes of them, and real
// ones.

#include "objects/sysinfo/Drives.h"
#include "objects/sysinfo/SystemSnapshot.h"
#include "support/MappedDrive.h"
#include "support/OtherWindows.h"

#include <gtest/gtest.h>

#include <map>

namespace tervane {
namespace {

constexpr std::uint64_t kMegabyte = 1048576;

TEST(DriveSizeTest, KeepsItsApproximation) {
    using enum SizeUnit;
    const struct {
        std::uint32_t high;
        std::uint32_t low;
        SizeUnit unit;
        std::uint64_t size;
    } rows[] = {
        {0, 0, kMegabytes, 0},
        {0, 1048575, kMegabytes, 0},
        {0, 4294967295, kMegabytes, 4095},
        {1, 0, kMegabytes, 4095},
        {1, 2147483648, kMegabytes, 6143}, // 6 GB
        {465, 0, kMegabytes, 465 * 4095},
        {4294967295, 4294967295, kMegabytes, 4294967296 * 4095},
        {0, 4294967295, kKilobytes, 4194303},
        {2, 2048, kKilobytes, 2 + 2 * 4194303},
        {0, 4294967295, kGigabytes, 3},
        {3, 1073741824, kGigabytes, 10},
        {0, 4294967295, kBytes, 4294967295},
        {1, 7, kBytes, 4294967295},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.size, InUnit({row.high, row.low}, row.unit)) << row.high << " " << row.low;
    }
}

struct FakeDrive {
    UINT type;
    std::uint64_t total;
    std::uint64_t free;
};
std::map<char, FakeDrive> drives;

UINT WINAPI TypeOf(LPCSTR root) {
    EXPECT_STREQ(":\\", root + 1);
    const auto found = drives.find(root[0]);
    return found == drives.end() ? DRIVE_NO_ROOT_DIR : found->second.type;
}

BOOL WINAPI Space(LPCSTR root, PULARGE_INTEGER available, PULARGE_INTEGER total,
                  PULARGE_INTEGER free) {
    EXPECT_FALSE(free);
    const auto found = drives.find(root[0]);
    if (found == drives.end()) {
        return FALSE;
    }
    available->QuadPart = found->second.free;
    total->QuadPart = found->second.total;
    return TRUE;
}

// In clusters of 32 sectors.
BOOL WINAPI Clusters(LPCSTR root, LPDWORD sectors, LPDWORD bytes, LPDWORD free, LPDWORD total) {
    const auto found = drives.find(root[0]);
    if (found == drives.end()) {
        return FALSE;
    }
    *sectors = 32;
    *bytes = 512;
    *free = static_cast<DWORD>(found->second.free / (32 * 512));
    *total = static_cast<DWORD>(found->second.total / (32 * 512));
    return TRUE;
}

UINT WINAPI WindowsFolder(LPSTR folder, UINT) {
    return static_cast<UINT>(strlen(strcpy(folder, "d:\\WINNT")));
}

constexpr DriveApi kNewer = {&TypeOf, &Space, &Clusters, &WindowsFolder};

TEST(DrivesTest, NamesEachClass) {
    drives = {
        {'A', {DRIVE_REMOVABLE, 0, 0}},
        {'B', {DRIVE_REMOVABLE, 0, 0}},
        {'C', {DRIVE_FIXED, 6144 * kMegabyte, 3 * kMegabyte}},
        {'D', {DRIVE_CDROM, 0, 0}},
        {'E', {DRIVE_REMOTE, 0, 0}},
        {'F', {DRIVE_RAMDISK, 8 * kMegabyte, 0}},
        {'G', {DRIVE_UNKNOWN, 8 * kMegabyte, 0}},
        {'H', {DRIVE_NO_ROOT_DIR, 8 * kMegabyte, 0}},
        {'I', {DRIVE_NO_ROOT_DIR, kMegabyte - 1, 0}},
        {'Z', {DRIVE_REMOVABLE, 0, 0}},
    };
    const Drives tested(kNewer);
    EXPECT_EQ("ABCDEHZ", tested.Letters());
    EXPECT_EQ('D', tested.SystemLetter());
    const std::map<char, const wchar_t*> texts = {
        {'A', L"FLOPPY_DRIVE"}, {'B', L"REMOVABLE_DRIVE"}, {'C', L"HARD_DRIVE"},
        {'D', L"CDROM_DRIVE"},  {'E', L"NET_DRIVE"},       {'F', L"ERROR"},
        {'G', L"ERROR"},        {'H', L"HARD_DRIVE"},      {'I', L"ERROR"},
        {'J', L"ERROR"},        {'Z', L"REMOVABLE_DRIVE"},
    };
    for (const auto& [letter, text] : texts) {
        EXPECT_STREQ(text, DriveClassText(tested.ClassOf(letter))) << letter;
    }
    drives.erase('A');
    EXPECT_EQ(DriveClass::kFloppy, Drives(kNewer).ClassOf('B'));
    drives.erase('B');
    EXPECT_EQ(DriveClass::kFloppy, Drives(kNewer).ClassOf('Z'));
}

TEST(DrivesTest, MeasuresWithAndWithoutTheNewerFunction) {
    drives = {{'C', {DRIVE_FIXED, 6144 * kMegabyte, 5 * kMegabyte / 2}}};
    const DriveApi older = {&TypeOf, nullptr, &Clusters, &WindowsFolder};
    for (const DriveApi& api : {kNewer, older}) {
        const Drives tested(api);
        EXPECT_EQ(6143u, tested.SpaceOf('C').total);
        EXPECT_EQ(2u, tested.SpaceOf('C').free);
        EXPECT_EQ(0u, tested.SpaceOf('Q').total);
        EXPECT_EQ(0u, tested.SpaceOf('Q').free);
    }
}

TEST(DrivesTest, FindsTheHardDriveWithTheMostFreeSpace) {
    const auto expect = [](const char* letters, std::vector<long> figures) {
        SystemSnapshot snapshot;
        snapshot.driveLetters = letters;
        FillDriveFigures(Drives(kNewer), snapshot);
        EXPECT_EQ(figures,
                  (std::vector<long>{snapshot.systemDriveIndex, snapshot.systemDriveTotalSize,
                                     snapshot.systemDriveFreeSpace, snapshot.largestFreeDriveIndex,
                                     snapshot.largestFreeDriveSpace}));
    };
    drives = {{'C', {DRIVE_FIXED, 140 * kMegabyte, 70 * kMegabyte}},
              {'D', {DRIVE_FIXED, 200 * kMegabyte, 100 * kMegabyte}},
              {'E', {DRIVE_FIXED, 200 * kMegabyte, 100 * kMegabyte}},
              {'F', {DRIVE_REMOTE, 1800 * kMegabyte, 900 * kMegabyte}}};
    expect("CDEF", {1, 200, 100, 1, 100});
    drives = {{'C', {DRIVE_FIXED, 0, 0}}, {'D', {DRIVE_REMOTE, 14 * kMegabyte, 7 * kMegabyte}}};
    expect("C", {-1, 0, 7, -1, 0}); // not D, where the system is
}

TEST(DrivesTest, KnowsTheRealOnes) {
    const struct {
        char letter;
        UINT type;
        DriveClass kind;
    } rows[] = {
        {'A', DRIVE_REMOVABLE, DriveClass::kFloppy}, {'B', DRIVE_REMOVABLE, DriveClass::kRemovable},
        {'N', DRIVE_CDROM, DriveClass::kCdrom},      {'O', DRIVE_REMOTE, DriveClass::kNet},
        {'P', DRIVE_FIXED, DriveClass::kHardDrive},  {'Q', DRIVE_RAMDISK, DriveClass::kError}};
    std::vector<std::unique_ptr<test::MappedDrive>> mapped;
    for (const auto& row : rows) {
        mapped.push_back(std::make_unique<test::MappedDrive>(row.letter, row.type));
        if (!mapped.back()->IsMapped()) {
            GTEST_SKIP() << "only Wine maps drives of any type, where the letters are free";
        }
    }
    const Drives tested;
    for (const auto& row : rows) {
        const bool isListed = tested.Letters().find(row.letter) != std::string::npos;
        EXPECT_EQ(row.kind != DriveClass::kError, isListed) << row.letter;
        EXPECT_EQ(row.kind, tested.ClassOf(row.letter)) << row.letter;
    }
    EXPECT_EQ('C', tested.SystemLetter());
    ULARGE_INTEGER available = {};
    ULARGE_INTEGER total = {};
    GetDiskFreeSpaceExA("P:\\", &available, &total, nullptr);
    const auto megabytes = static_cast<double>(total.QuadPart) / kMegabyte;
    EXPECT_NEAR(megabytes, static_cast<double>(tested.SpaceOf('P').total), 1 + megabytes / 4096);
}

} // namespace
} // namespace tervane
