#include "support/OtherWindows.h"

#include "ZelBase/Handles.h"
#include "platform/registry/RegistryKey.h"

namespace tervane::test {
namespace {

constexpr int kFirstValue = 100; // exit codes below are those of a test program
constexpr int kValues = 100;
constexpr DWORD kLongestRun = 60'000; // ms

// A copy of this program, so that the version that Wine tells it is told to nobody else.
class Copy {
public:
    Copy(const std::wstring& version, const std::wstring& missingLibrary) {
        wchar_t program[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        path_ = std::wstring(program) + L"." + version + L".exe";
        CopyFileW(program, path_.c_str(), FALSE);
        RegistryKey::Create(RegistryHive::kCurrentUser, Settings()).WriteText(L"Version", version);
        if (!missingLibrary.empty()) {
            RegistryKey::Create(RegistryHive::kCurrentUser, Overrides())
                .WriteText(missingLibrary, L"");
        }
    }
    ~Copy() {
        RegistryKey::Delete(RegistryHive::kCurrentUser, Overrides());
        RegistryKey::Delete(RegistryHive::kCurrentUser, Settings());
        DeleteFileW(path_.c_str());
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    DWORD Run(const std::wstring& arguments) const {
        std::wstring command = L"\"" + path_ + L"\" " + arguments;
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process = {};
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &process)) {
            return GetLastError();
        }
        const ZelBase::UniqueHandle thread(process.hThread);
        const ZelBase::UniqueHandle running(process.hProcess);
        DWORD status = WAIT_TIMEOUT;
        if (WaitForSingleObject(running.Get(), kLongestRun) != WAIT_OBJECT_0) {
            TerminateProcess(running.Get(), status);
        } else {
            GetExitCodeProcess(running.Get(), &status);
        }
        return status;
    }

private:
    std::wstring Settings() const {
        return L"Software\\Wine\\AppDefaults\\" + path_.substr(path_.find_last_of(L"\\/") + 1);
    }

    std::wstring Overrides() const { return Settings() + L"\\DllOverrides"; }

    std::wstring path_;
};

std::wstring Widen(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

} // namespace

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

std::optional<int> ValueOn(const std::string& version, const std::string& test,
                           const std::string& missingLibrary) {
    const Copy program(Widen(version), Widen(missingLibrary));
    const auto status =
        static_cast<int>(program.Run(L"--gtest_also_run_disabled_tests --gtest_brief=1 "
                                     L"--gtest_filter=" +
                                     Widen(test)));
    const bool isValue = status >= kFirstValue && status < kFirstValue + kValues;
    return isValue ? std::optional(status - kFirstValue) : std::nullopt;
}

void ReportValue(int value) {
    ExitProcess(static_cast<UINT>(kFirstValue + value));
}

} // namespace tervane::test
