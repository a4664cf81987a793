#pragma once

// Windows in other versions, as far as Wine can play them: a second process of this test program to
// which the system tells another version.

#include "ZelBase/Handles.h"
#include "platform/registry/RegistryKey.h"

#include <optional>
#include <string>

namespace tervane::test {

inline bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// A copy of this program, so that the version that Wine tells it is told to nobody else.
class OtherWindows {
public:
    OtherWindows(const std::string& version, const std::string& missingLibrary) {
        wchar_t program[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        const std::wstring name(version.begin(), version.end());
        path_ = program + (L"." + name) + L".exe";
        settings_ = L"Software\\Wine\\AppDefaults\\" + path_.substr(path_.find_last_of(L"\\/") + 1);
        CopyFileW(program, path_.c_str(), FALSE);
        RegistryKey::Create(RegistryHive::kCurrentUser, settings_).WriteText(L"Version", name);
        if (!missingLibrary.empty()) {
            RegistryKey::Create(RegistryHive::kCurrentUser, settings_ + L"\\DllOverrides")
                .WriteText(std::wstring(missingLibrary.begin(), missingLibrary.end()), L"");
        }
    }
    ~OtherWindows() {
        RegistryKey::Delete(RegistryHive::kCurrentUser, settings_ + L"\\DllOverrides");
        RegistryKey::Delete(RegistryHive::kCurrentUser, settings_);
        DeleteFileW(path_.c_str());
    }
    OtherWindows(const OtherWindows&) = delete;
    OtherWindows& operator=(const OtherWindows&) = delete;

    // The status with which it ends, or of the failure to start or to end it.
    DWORD Run(const std::string& arguments) const {
        constexpr DWORD kLongestRun = 60'000; // ms
        std::wstring command =
            L"\"" + path_ + L"\" " + std::wstring(arguments.begin(), arguments.end());
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
    std::wstring path_;
    std::wstring settings_;
};

inline constexpr int kFirstValue = 100; // exit codes below are those of a test program
inline constexpr int kValues = 100;

// Runs one test of this program, one that is disabled so that nobody else runs it, and returns the
// value that it reports; nullopt when it reports none. `version` is a name of Wine's configuration
// ("win98"); a library that is named ("rasapi32") is missing there. Needs the real
// HKEY_CURRENT_USER, where Wine's configuration is.
inline std::optional<int> ValueOn(const std::string& version, const std::string& test,
                                  const std::string& missingLibrary = "") {
    const auto status = static_cast<int>(
        OtherWindows(version, missingLibrary)
            .Run("--gtest_also_run_disabled_tests --gtest_brief=1 --gtest_filter=" + test));
    const bool isValue = status >= kFirstValue && status < kFirstValue + kValues;
    return isValue ? std::optional(status - kFirstValue) : std::nullopt;
}
// Ends such a test, and its process. `value` is from 0 to 99.
[[noreturn]] inline void ReportValue(int value) {
    ExitProcess(static_cast<UINT>(kFirstValue + value));
}

} // namespace tervane::test
