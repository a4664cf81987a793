#pragma once

// The short code by which scripts know a release of Windows with its service pack and edition.

#include <optional>
#include <string>

namespace tervane {

// What the system says of its own version. Systems that know no suites and product types leave them
// 0.
struct VersionRecord {
    // 1 for the 9x family, 2 for the NT family.
    unsigned long platform = 0;
    unsigned long major = 0;
    unsigned long minor = 0;
    // "Service Pack 3", or " A " for a second edition.
    std::string serviceText;
    // The VER_SUITE_ flags.
    unsigned suite = 0;
    // 1 for a workstation.
    unsigned productType = 0;
};

// A number from 1 to 38; 0 for no record and for what has no code.
int ClassifyOs(const std::optional<VersionRecord>& version);

// The code of that number, such as "win2ksp1"; "error" for every other number.
const wchar_t* OsCode(int number) noexcept;

// What this process is told. nullopt when it is told nothing. Any thread.
std::optional<VersionRecord> CurrentVersion();

} // namespace tervane
