#pragma once

// What this process has taken of the system's memory; for finding leaks.

#include <cstddef>

#include <windows.h>

#define PSAPI_VERSION 2 // the functions of kernel32
#include <psapi.h>

namespace tervane::test {

// Bytes.
inline size_t CommittedMemory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

} // namespace tervane::test
