#pragma once

// What this process has taken of the system; for finding leaks. Under Wine GetProcessHandleCount
// answers 0 whatever happens, so a test for leaks would prove nothing with it; the system's table
// of all handles is kept there, too.

#include "ZelBase/Handles.h"

#include <cstddef>
#include <vector>

#include <windows.h>

#include <tlhelp32.h>

#define PSAPI_VERSION 2 // the functions of kernel32
#include <psapi.h>

namespace tervane::test {

// 0 when the system does not tell.
inline std::size_t OpenHandleCount() {
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
    std::size_t count = 0;
    const auto* entries = reinterpret_cast<const Entry*>(table.data() + 2);
    for (ULONG_PTR i = 0; status == 0 && i < table[0]; ++i) {
        count += entries[i].process == GetCurrentProcessId();
    }
    return count;
}

inline std::size_t ThreadCount() {
    const ZelBase::UniqueHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more;
         more = Thread32Next(snapshot.Get(), &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    return count;
}

// Bytes.
inline std::size_t CommittedMemory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

// Of thread-local storage.
inline DWORD LowestFreeTlsSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

} // namespace tervane::test
