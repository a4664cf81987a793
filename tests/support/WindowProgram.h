#pragma once

// A second process with real windows: window_program, started with the options that it describes
// in tests/window_program/Main.cpp and read line by line.

#include "ZelBase/Handles.h"
#include "support/TestThreads.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace tervane::test {

class WindowProgram {
public:
    // Starts the program; `Expect("ready")` waits for its windows.
    explicit WindowProgram(const std::vector<std::wstring>& options) {
        wchar_t path[MAX_PATH];
        const std::wstring self(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
        std::wstring command =
            L"\"" + self.substr(0, self.find_last_of(L'\\') + 1) + L"window_program.exe\"";
        for (const std::wstring& option : options) {
            command.append(L" \"").append(option).append(L"\"");
        }
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        ZelBase::UniqueHandle input;
        CreatePipe(output_.Put(), input.Put(), &inherited, 0);
        SetHandleInformation(output_.Get(), HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = input.Get();
        PROCESS_INFORMATION started = {};
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &started);
        process_.Reset(started.hProcess);
        processId_ = started.dwProcessId;
        const ZelBase::UniqueHandle thread(started.hThread);
        reader_ = TestThread([this] { ReadLines(); });
    }
    // Ends it.
    ~WindowProgram() {
        TerminateProcess(process_.Get(), 0);
        WaitForSingleObject(process_.Get(), 10000);
        reader_.join(); // the pipe breaks with the process
    }
    WindowProgram(const WindowProgram&) = delete;
    WindowProgram& operator=(const WindowProgram&) = delete;

    // Waits until the program has written this line, and skips those before it. False when it has
    // not come after `milliseconds`.
    bool Expect(std::string_view line, DWORD milliseconds = 10000) {
        std::unique_lock lock(mutex_);
        return arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] {
            const auto found = std::ranges::find(lines_, line);
            if (found == lines_.end()) {
                return false;
            }
            lines_.erase(lines_.begin(), found + 1);
            return true;
        });
    }
    // What the program has written and nobody has expected yet.
    std::deque<std::string> Pending() {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    DWORD ProcessId() const { return processId_; }

private:
    void ReadLines() {
        std::string line;
        char character = 0;
        DWORD count = 0;
        while (ReadFile(output_.Get(), &character, 1, &count, nullptr) && count == 1) {
            if (character != '\n') {
                line += character;
                continue;
            }
            const std::lock_guard lock(mutex_);
            lines_.push_back(std::exchange(line, {}));
            arrived_.notify_all();
        }
    }

    ZelBase::UniqueHandle process_;
    DWORD processId_ = 0;
    ZelBase::UniqueHandle output_;
    TestMutex mutex_;
    TestCondition arrived_;
    std::deque<std::string> lines_;
    TestThread reader_;
};

// A title that no other window has.
inline std::wstring UniqueTitle(std::wstring_view stem) {
    static std::atomic<int> number = 0;
    return std::wstring(stem) + L" " + std::to_wstring(GetCurrentProcessId()) + L" " +
           std::to_wstring(++number);
}

} // namespace tervane::test
