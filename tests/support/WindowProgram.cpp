#include "support/WindowProgram.h"

#include <algorithm>
#include <atomic>
#include <chrono>

namespace tervane::test {
namespace {

std::wstring ProgramPath() {
    wchar_t path[MAX_PATH];
    const std::wstring self(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return self.substr(0, self.find_last_of(L'\\') + 1) + L"window_program.exe";
}

} // namespace

WindowProgram::WindowProgram(const std::vector<std::wstring>& options) {
    std::wstring command = L"\"" + ProgramPath() + L"\"";
    for (const std::wstring& option : options) {
        command.append(L" \"").append(option).append(L"\"");
    }
    Start(std::move(command));
    reader_ = TestThread([this] { ReadLines(); });
}

WindowProgram::~WindowProgram() {
    TerminateProcess(process_.Get(), 0);
    WaitForSingleObject(process_.Get(), 10000);
    reader_.join(); // the pipe breaks with the process
}

void WindowProgram::Start(std::wstring command) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    ZelBase::UniqueHandle input;
    CreatePipe(output_.Put(), input.Put(), &inherited, 0);
    SetHandleInformation(output_.Get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = input.Get();
    PROCESS_INFORMATION started = {};
    CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                   &started);
    process_.Reset(started.hProcess);
    processId_ = started.dwProcessId;
    const ZelBase::UniqueHandle thread(started.hThread);
}

void WindowProgram::ReadLines() {
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

bool WindowProgram::Expect(std::string_view line, DWORD milliseconds) {
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

std::deque<std::string> WindowProgram::Pending() {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::wstring UniqueTitle(std::wstring_view stem) {
    static std::atomic<int> number = 0;
    return std::wstring(stem) + L" " + std::to_wstring(GetCurrentProcessId()) + L" " +
           std::to_wstring(++number);
}

} // namespace tervane::test
