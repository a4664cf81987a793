// Runs a command line as somebody who is no administrator, and ends with its exit code.

#include "ZelBase/Handles.h"

#include <windows.h>

#include <cstdio>

int wmain(int, wchar_t** arguments) {
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof administrators;
    SID_AND_ATTRIBUTES without = {administrators, 0};
    ZelBase::UniqueHandle token;
    ZelBase::UniqueHandle ordinary;
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    if (!CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) ||
        !OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, token.Put()) ||
        !CreateRestrictedToken(token.Get(), DISABLE_MAX_PRIVILEGE, 1, &without, 0, nullptr, 0,
                               nullptr, ordinary.Put()) ||
        !CreateProcessAsUserW(ordinary.Get(), nullptr, arguments[1], nullptr, nullptr, FALSE, 0,
                              nullptr, nullptr, &start, &process)) {
        std::printf("error %lu\n", GetLastError());
        return 1;
    }
    DWORD code = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    return static_cast<int>(code);
}
