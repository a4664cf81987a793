#pragma once

// A second process with real windows: window_program, started with the options that it describes
// in tests/window_program/Main.cpp and read line by line.

#include "support/ChildProcess.h"

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

namespace tervane::test {

class WindowProgram : public ChildProcess {
public:
    // Starts the program; `Expect("ready")` waits for its windows.
    explicit WindowProgram(const std::vector<std::wstring>& options)
        : ChildProcess(Program(L"window_program.exe", Quoted(options))) {}

    // Waits until the program writes this line, and skips those before it. False when nothing comes
    // for ten seconds.
    bool Expect(std::string_view line) {
        while (const auto next = ReadLine(10000)) {
            if (*next == line) {
                return true;
            }
        }
        return false;
    }

private:
    static std::wstring Quoted(const std::vector<std::wstring>& options) {
        std::wstring text;
        for (const std::wstring& option : options) {
            text.append(L" \"").append(option).append(L"\"");
        }
        return text;
    }
};

// A title that no other window has.
inline std::wstring UniqueTitle(std::wstring_view stem) {
    static std::atomic<int> number = 0;
    return std::wstring(stem) + L" " + std::to_wstring(GetCurrentProcessId()) + L" " +
           std::to_wstring(++number);
}

} // namespace tervane::test
