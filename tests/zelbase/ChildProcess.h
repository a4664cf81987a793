#pragma once

// A second process for a test: started with its standard output piped here, ended with the object
// if it has not ended by itself.

#include "ZelBase/Handles.h"

#include <optional>
#include <string>

namespace ZelBase::test {

class ChildProcess {
public:
    // This test program in one of the roles that its main function knows.
    static ChildProcess Self(const std::string& role);
    // A copy of it that the system tells an older version, as Wine's configuration names it
    // ("nt40").
    static ChildProcess SelfOnOldSystem(const std::string& role, const std::string& version);
    // A program of the same build; `place` is its path from this program's folder. `screen`, if not
    // null, gets its standard output.
    static ChildProcess Program(const std::string& place, const std::string& arguments,
                                HANDLE screen = nullptr);
    ~ChildProcess();
    ChildProcess(ChildProcess&&) = default;
    ChildProcess& operator=(ChildProcess&&) = delete;

    // The next line of its output without line end; empty at the end of the output, and when a
    // minute brings nothing.
    std::optional<std::string> ReadLine();
    // Its exit code; empty when it has not ended in time.
    std::optional<DWORD> Wait(DWORD milliseconds = 60000);

private:
    explicit ChildProcess(std::string commandLine, HANDLE screen = nullptr);
    bool WaitForOutput() const;

    UniqueHandle process_;
    UniqueHandle output_;
    std::string buffer_;
    std::string copy_; // a file to delete when the process is gone
};

} // namespace ZelBase::test
