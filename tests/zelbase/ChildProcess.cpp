#include "tests/zelbase/ChildProcess.h"

namespace ZelBase::test {
namespace {

std::string OwnPath() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

} // namespace

ChildProcess ChildProcess::Self(const std::string& role) {
    return ChildProcess("\"" + OwnPath() + "\" --child " + role);
}

ChildProcess ChildProcess::SelfOnOldSystem(const std::string& role, const std::string& version) {
    const std::string name = "test_zelbase_" + version + ".exe";
    char folder[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    const std::string copy = folder + name;
    CopyFileA(OwnPath().c_str(), copy.c_str(), FALSE);
    const std::string key = "Software\\Wine\\AppDefaults\\" + name;
    RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "Version", REG_SZ, version.c_str(),
                    static_cast<DWORD>(version.size() + 1));
    ChildProcess child("\"" + copy + "\" --child " + role);
    child.copy_ = copy;
    return child;
}

ChildProcess ChildProcess::Program(const std::string& place, const std::string& arguments,
                                   HANDLE screen) {
    const std::string own = OwnPath();
    return ChildProcess("\"" + own.substr(0, own.rfind('\\') + 1) + place + "\" " + arguments,
                        screen);
}

ChildProcess::ChildProcess(std::string commandLine, HANDLE screen) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    UniqueHandle writeEnd;
    // A small pipe, so that a child whose output nobody reads soon stands still.
    CreatePipe(output_.Put(), writeEnd.Put(), &inheritable, 4096);
    SetHandleInformation(output_.Get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = screen != nullptr ? screen : writeEnd.Get();
    startup.hStdError = writeEnd.Get();
    PROCESS_INFORMATION information = {};
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &information)) {
        CloseHandle(information.hThread);
        process_.Reset(information.hProcess);
    }
}

ChildProcess::~ChildProcess() {
    if (process_) {
        TerminateProcess(process_.Get(), 1);
        WaitForSingleObject(process_.Get(), INFINITE);
    }
    if (!copy_.empty()) {
        DeleteFileA(copy_.c_str());
    }
}

std::optional<std::string> ChildProcess::ReadLine() {
    size_t end = 0;
    while ((end = buffer_.find('\n')) == std::string::npos) {
        if (!WaitForOutput()) {
            return std::nullopt;
        }
        char chunk[4096];
        DWORD count = 0;
        if (!ReadFile(output_.Get(), chunk, sizeof chunk, &count, nullptr) || count == 0) {
            return std::nullopt;
        }
        buffer_.append(chunk, count);
    }
    std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

// Anonymous pipes cannot be waited for, hence the looking. True at the end of the output, too.
bool ChildProcess::WaitForOutput() const {
    const DWORD start = GetTickCount();
    DWORD available = 0;
    while (PeekNamedPipe(output_.Get(), nullptr, 0, nullptr, &available, nullptr) &&
           available == 0) {
        if (GetTickCount() - start > 60000) {
            return false;
        }
        Sleep(1);
    }
    return true;
}

std::optional<DWORD> ChildProcess::Wait(DWORD milliseconds) {
    DWORD code = 0;
    if (WaitForSingleObject(process_.Get(), milliseconds) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process_.Get(), &code)) {
        return std::nullopt;
    }
    return code;
}

} // namespace ZelBase::test
