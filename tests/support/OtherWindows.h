#pragma once

// Windows in other versions, as far as Wine can play them: a second process of this test program to
// which the system tells another version.

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace tervane::test {

inline bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Skips the test elsewhere: only Wine can be told to be another Windows, and shows its host's
// files.
#define TERVANE_ONLY_ON_WINE()                                                                     \
    if (tervane::test::IsWine()) {                                                                 \
    } else                                                                                         \
        GTEST_SKIP() << "for Wine only"

inline constexpr int kFirstValue = 100; // exit codes below are those of a test program
inline constexpr int kValues = 100;

// Runs one test of this program, one that is disabled so that nobody else runs it, and returns the
// value that it reports; nullopt when it reports none.
inline std::optional<int> ValueOn(const std::string& version, const std::string& test,
                                  const std::string& missingLibrary = "") {
    ChildProcess child = ChildProcess::SelfOn(
        version, "--gtest_also_run_disabled_tests --gtest_brief=1 --gtest_filter=" + test,
        missingLibrary);
    while (child.ReadLine()) { // or it would stand still
    }
    const auto status = static_cast<int>(child.Wait().value_or(0));
    const bool isValue = status >= kFirstValue && status < kFirstValue + kValues;
    return isValue ? std::optional(status - kFirstValue) : std::nullopt;
}
// Ends such a test, and its process. `value` is from 0 to 99.
[[noreturn]] inline void ReportValue(int value) {
    ExitProcess(static_cast<UINT>(kFirstValue + value));
}

} // namespace tervane::test
