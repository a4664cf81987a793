#pragma once

// Windows in other versions, as far as Wine can play them: a second process of this test program to
// which the system tells another version.

#include <optional>
#include <string>

namespace tervane::test {

bool IsWine();

// Runs one test of this program, one that is disabled so that nobody else runs it, and returns the
// value that it reports; nullopt when it reports none. `version` is a name of Wine's configuration
// ("win98"); a library that is named ("rasapi32") is missing there. Needs the real
// HKEY_CURRENT_USER, where Wine's configuration is.
std::optional<int> ValueOn(const std::string& version, const std::string& test,
                           const std::string& missingLibrary = "");
// Ends such a test, and its process. `value` is from 0 to 99.
[[noreturn]] void ReportValue(int value);

} // namespace tervane::test
