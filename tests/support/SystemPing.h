#pragma once

// Whether this machine lets a program ping: asked of the system's own library, so that a test which
// is left out without it does not depend on what it tests.

#include "ZelBase/Handles.h"

#include <winsock2.h>

#include <iphlpapi.h>

#include <icmpapi.h>

namespace tervane::test {

inline bool SystemCanPing() {
    // Where ICMP.DLL's functions lie; loaded by a look-up of one of them, it would stay for good.
    const ZelBase::UniqueLibrary code(LoadLibraryA("IPHLPAPI.DLL"));
    const ZelBase::UniqueLibrary library(LoadLibraryA("ICMP.DLL"));
    const auto function = [&](const char* name) {
        return reinterpret_cast<void*>(library ? GetProcAddress(library.Get(), name) : nullptr);
    };
    const auto create = reinterpret_cast<decltype(&IcmpCreateFile)>(function("IcmpCreateFile"));
    const auto send = reinterpret_cast<decltype(&IcmpSendEcho)>(function("IcmpSendEcho"));
    const auto close = reinterpret_cast<decltype(&IcmpCloseHandle)>(function("IcmpCloseHandle"));
    const HANDLE file = create && send && close ? create() : INVALID_HANDLE_VALUE;
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    char data[] = "ping";
    char reply[256] = {};
    const DWORD replies =
        send(file, htonl(INADDR_LOOPBACK), data, sizeof data, nullptr, reply, sizeof reply, 5000);
    close(file);
    return replies != 0;
}

} // namespace tervane::test
