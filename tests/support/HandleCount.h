#pragma once

// How many handles this process has open. Under Wine GetProcessHandleCount answers 0 whatever
// happens, so a test for leaks would prove nothing with it; the system's table of all handles is
// kept there, too.

#include <cstddef>
#include <vector>

#include <windows.h>

namespace tervane::test {

// 0 when the system does not tell.
inline size_t OpenHandleCount() {
    struct Entry {
        void* object;
        ULONG_PTR process;
        ULONG_PTR handle;
        ULONG access;
        USHORT creator;
        USHORT type;
        ULONG attributes;
        ULONG reserved;
    };
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    constexpr ULONG kExtendedHandleInformation = 64;
    constexpr LONG kTooSmall = static_cast<LONG>(0xC0000004);
    const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll"), "NtQuerySystemInformation")));
    // The number of entries, a reserved word, the entries.
    std::vector<ULONG_PTR> table(65'536);
    LONG status = kTooSmall;
    while (status == kTooSmall) {
        table.resize(table.size() * 2);
        status = query(kExtendedHandleInformation, table.data(),
                       static_cast<ULONG>(table.size() * sizeof(ULONG_PTR)), nullptr);
    }
    size_t count = 0;
    const auto* entries = reinterpret_cast<const Entry*>(table.data() + 2);
    for (ULONG_PTR i = 0; status == 0 && i < table[0]; ++i) {
        count += entries[i].process == GetCurrentProcessId();
    }
    return count;
}

} // namespace tervane::test
