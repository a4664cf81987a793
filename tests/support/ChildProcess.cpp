#include "support/ChildProcess.h"

namespace tervane::test {
namespace {

std::wstring OwnPath() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

std::wstring Wide(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

void Configure(const std::wstring& key, const std::string& name, const std::string& text) {
    RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), Wide(name).c_str(), REG_SZ, Wide(text).c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

} // namespace

ChildProcess ChildProcess::Self(const std::string& arguments) {
    return ChildProcess(L"\"" + OwnPath() + L"\" " + Wide(arguments));
}

ChildProcess ChildProcess::SelfOn(const std::string& version, const std::string& arguments,
                                  const std::string& missingLibrary) {
    const std::wstring own = OwnPath();
    const std::wstring copy = own + L"." + Wide(version) + L".exe";
    const std::wstring settings =
        L"Software\\Wine\\AppDefaults\\" + copy.substr(copy.rfind(L'\\') + 1);
    CopyFileW(own.c_str(), copy.c_str(), FALSE);
    Configure(settings, "Version", version);
    if (!missingLibrary.empty()) {
        Configure(settings + L"\\DllOverrides", missingLibrary, "");
    }
    ChildProcess child(L"\"" + copy + L"\" " + Wide(arguments));
    child.copy_ = copy;
    child.settings_ = settings;
    return child;
}

ChildProcess ChildProcess::Program(const std::wstring& place, const std::wstring& arguments,
                                   HANDLE screen) {
    const std::wstring own = OwnPath();
    return ChildProcess(L"\"" + own.substr(0, own.rfind(L'\\') + 1) + place + L"\" " + arguments,
                        screen);
}

ChildProcess::ChildProcess(std::wstring commandLine, HANDLE screen) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    ZelBase::UniqueHandle writeEnd;
    // A small pipe, so that a child whose output nobody reads soon stands still.
    CreatePipe(output_.Put(), writeEnd.Put(), &inheritable, 4096);
    SetHandleInformation(output_.Get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = screen != nullptr ? screen : writeEnd.Get();
    startup.hStdError = writeEnd.Get();
    PROCESS_INFORMATION information = {};
    if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
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
        DeleteFileW(copy_.c_str());
        RegDeleteTreeW(HKEY_CURRENT_USER, settings_.c_str());
    }
}

std::optional<std::string> ChildProcess::ReadLine(DWORD milliseconds) {
    std::size_t end = 0;
    while ((end = buffer_.find('\n')) == std::string::npos) {
        if (!WaitForOutput(milliseconds)) {
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
bool ChildProcess::WaitForOutput(DWORD milliseconds) const {
    const DWORD start = GetTickCount();
    DWORD available = 0;
    while (PeekNamedPipe(output_.Get(), nullptr, 0, nullptr, &available, nullptr) &&
           available == 0) {
        if (GetTickCount() - start >= milliseconds) {
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

} // namespace tervane::test
