#pragma once

// A second process for a test: started with its standard output piped here, ended with the object
// if it has not ended by itself.

#include "ZelBase/Handles.h"

#include <optional>
#include <string>

namespace tervane::test {

class ChildProcess {
public:
    // This test program, with other arguments.
    static ChildProcess Self(const std::string& arguments);
    // A copy of it that Wine tells another version, as its configuration names it ("nt40"), so that
    // nobody else is told that; a library that is named ("rasapi32") is missing there. Needs the
    // real HKEY_CURRENT_USER, where Wine's configuration is.
    static ChildProcess SelfOn(const std::string& version, const std::string& arguments,
                               const std::string& missingLibrary = "");
    // A program of the same build; `place` is its path from this program's folder. `screen`, if not
    // null, gets its standard output.
    static ChildProcess Program(const std::wstring& place, const std::wstring& arguments,
                                HANDLE screen = nullptr);
    ~ChildProcess();
    ChildProcess(ChildProcess&&) = default;
    ChildProcess& operator=(ChildProcess&&) = delete;

    // The next line of its output without line end; empty at the end of the output, and when that
    // time brings nothing.
    std::optional<std::string> ReadLine(DWORD milliseconds = 60000);
    // Its exit code; empty when it has not ended in time.
    std::optional<DWORD> Wait(DWORD milliseconds = 60000);
    DWORD Id() const { return GetProcessId(process_.Get()); }

private:
    explicit ChildProcess(std::wstring commandLine, HANDLE screen = nullptr);
    bool WaitForOutput(DWORD milliseconds) const;

    ZelBase::UniqueHandle process_;
    ZelBase::UniqueHandle output_;
    std::string buffer_;
    // A file and a key to delete when the process is gone.
    std::wstring copy_;
    std::wstring settings_;
};

} // namespace tervane::test
