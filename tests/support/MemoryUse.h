#pragma once

// What this process has taken of the system's memory; for finding leaks.

#include <cstddef>

#include <windows.h>

#define PSAPI_VERSION 2 // the functions of kernel32
#include <psapi.h>

namespace tervane::test {

struct MemoryUse {
    size_t resident; // bytes
    size_t committed;
};

inline MemoryUse MemoryInUse() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return {counters.WorkingSetSize, counters.PagefileUsage};
}

} // namespace tervane::test
