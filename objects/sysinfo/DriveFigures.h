#pragma once

// The figures of the drives in a snapshot.

#include "objects/sysinfo/Drives.h"
#include "objects/sysinfo/SystemSnapshot.h"

namespace tervane {

// Fills the figures about drives; `snapshot` has its driveLetters.
void FillDriveFigures(const Drives& drives, SystemSnapshot& snapshot) noexcept;

} // namespace tervane
