#pragma once

// A second process with real windows: window_program, started with the options that it describes
// in tests/window_program/Main.cpp and read line by line.

#include "ZelBase/Handles.h"
#include "support/TestThreads.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace tervane::test {

class WindowProgram {
public:
    // Starts the program; `Expect("ready")` waits for its windows.
    explicit WindowProgram(const std::vector<std::wstring>& options);
    // Ends it.
    ~WindowProgram();
    WindowProgram(const WindowProgram&) = delete;
    WindowProgram& operator=(const WindowProgram&) = delete;

    // Waits until the program has written this line, and skips those before it. False when it has
    // not come after `milliseconds`.
    bool Expect(std::string_view line, DWORD milliseconds = 10000);
    // What the program has written and nobody has expected yet.
    std::deque<std::string> Pending();
    DWORD ProcessId() const { return processId_; }

private:
    void Start(std::wstring command);
    void ReadLines();

    ZelBase::UniqueHandle process_;
    DWORD processId_ = 0;
    ZelBase::UniqueHandle output_;
    TestMutex mutex_;
    TestCondition arrived_;
    std::deque<std::string> lines_;
    TestThread reader_;
};

// A title that no other window has.
std::wstring UniqueTitle(std::wstring_view stem);

} // namespace tervane::test
