#pragma once

// Runs the built script_host.exe in a process and a console of its own and collects what it prints.

#include <windows.h>

#include <string>
#include <string_view>

namespace tervane::test {

struct HostResult {
    std::string out;
    std::string error;
    DWORD exitCode = 0;
    // False if the host had to be ended by force.
    bool ended = false;
};

class HostRunner {
public:
    // Makes a folder for scripts and registers the event source, for the machine: Wine's COM does
    // not look up the user's classes.
    HostRunner();
    HostRunner(const HostRunner&) = delete;
    HostRunner& operator=(const HostRunner&) = delete;
    ~HostRunner();

    // Writes the bytes to a script file; the result is its path.
    std::wstring Write(const std::wstring& name, std::string_view bytes) const;
    // Runs `script_host.exe <commandLine>` with `input` as its standard input.
    HostResult Run(const std::wstring& commandLine, std::string_view input = {}) const;
    // Writes a script named "test" + extension and runs it.
    HostResult RunText(const std::wstring& extension, std::string_view bytes) const;

private:
    std::wstring folder_;
};

} // namespace tervane::test
