#include "tests/script_host/HostRunner.h"

#include "ZelBase/Handles.h"

#include <algorithm>

namespace tervane::test {
namespace {

using ZelBase::UniqueFile;
using ZelBase::UniqueHandle;

// Far beyond what any script here takes, even on a loaded machine.
constexpr DWORD kHangMs = 60'000;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr wchar_t kProgId[] = L"ScriptHostTest.EventSource";
constexpr wchar_t kClassId[] = L"{A95E3D70-41B6-4D8C-9E02-6C3F8B7D2A14}";

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/"));
}

std::wstring OwnFolder() {
    wchar_t path[MAX_PATH];
    return FolderOf({path, GetModuleFileNameW(nullptr, path, MAX_PATH)});
}

void SetKey(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

UniqueFile OpenInheritable(const std::wstring& path, DWORD access, DWORD whetherThere) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return UniqueFile(CreateFileW(path.c_str(), access, kShareAll, &inheritable, whetherThere,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

UniqueFile CreateInheritable(const std::wstring& path) {
    return OpenInheritable(path, GENERIC_WRITE, CREATE_ALWAYS);
}

// The file's bytes with lines ended by "\n".
std::string ReadLines(const std::wstring& path) {
    UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text;
    char piece[4096];
    DWORD got = 0;
    while (ReadFile(file.Get(), piece, sizeof piece, &got, nullptr) && got != 0) {
        text.append(piece, got);
    }
    std::erase(text, '\r');
    return text;
}

} // namespace

HostRunner::HostRunner() {
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    folder_ = temp + (L"script_host_" + std::to_wstring(GetCurrentProcessId()));
    CreateDirectoryW(folder_.c_str(), nullptr);
    SetKey(std::wstring(kProgId) + L"\\CLSID", nullptr, kClassId);
    const std::wstring server = std::wstring(L"CLSID\\") + kClassId + L"\\InprocServer32";
    SetKey(server, nullptr, OwnFolder() + L"\\event_source\\event_source.dll");
    SetKey(server, L"ThreadingModel", L"Apartment");
}

HostRunner::~HostRunner() {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgId);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (std::wstring(L"CLSID\\") + kClassId).c_str());
    WIN32_FIND_DATAW found;
    ZelBase::UniqueFind search(FindFirstFileW((folder_ + L"\\*").c_str(), &found));
    while (search && FindNextFileW(search.Get(), &found)) {
        DeleteFileW((folder_ + L"\\" + found.cFileName).c_str());
    }
    RemoveDirectoryW(folder_.c_str());
}

std::wstring HostRunner::Write(const std::wstring& name, std::string_view bytes) const {
    std::wstring path = folder_ + L"\\" + name;
    UniqueFile file = CreateInheritable(path);
    DWORD written = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return path;
}

HostResult HostRunner::Run(const std::wstring& commandLine, std::string_view input) const {
    const std::wstring host = FolderOf(OwnFolder()) + L"\\tools\\script_host.exe";
    // New files each time: the last host's console may still hold the old ones.
    static unsigned runs = 0;
    const std::wstring outPath = folder_ + L"\\out" + std::to_wstring(++runs);
    const std::wstring errorPath = folder_ + L"\\error" + std::to_wstring(runs);
    UniqueFile out = CreateInheritable(outPath);
    UniqueFile error = CreateInheritable(errorPath);
    UniqueFile in =
        OpenInheritable(Write(L"in" + std::to_wstring(runs), input), GENERIC_READ, OPEN_EXISTING);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = in.Get();
    start.hStdOutput = out.Get();
    start.hStdError = error.Get();
    PROCESS_INFORMATION process{};
    std::wstring line = L"\"" + host + L"\" " + commandLine;
    HostResult result;
    // With a console of its own, Ctrl+C hits the host alone.
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE, nullptr,
                        folder_.c_str(), &start, &process)) {
        result.error = "cannot start the host";
        return result;
    }
    UniqueHandle thread(process.hThread);
    UniqueHandle running(process.hProcess);
    result.ended = WaitForSingleObject(running.Get(), kHangMs) == WAIT_OBJECT_0;
    if (!result.ended) {
        TerminateProcess(running.Get(), 0);
        WaitForSingleObject(running.Get(), kHangMs);
    }
    GetExitCodeProcess(running.Get(), &result.exitCode);
    result.out = ReadLines(outPath);
    result.error = ReadLines(errorPath);
    return result;
}

HostResult HostRunner::RunText(const std::wstring& extension, std::string_view bytes) const {
    return Run(L"\"" + Write(L"test" + extension, bytes) + L"\"");
}

} // namespace tervane::test
