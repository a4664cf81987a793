#include "objects/mailclient/OutlookExpressProgram.h"

#include "platform/registry/RegistryKey.h"
#include "platform/text/EnvironmentText.h"

#include <algorithm>

namespace tervane {
namespace {

constexpr wchar_t kProgram[] = L"SOFTWARE\\Microsoft\\Outlook Express";
// What the setup of the browser knows of it.
constexpr wchar_t kSetup[] = L"SOFTWARE\\Microsoft\\Active Setup\\Installed Components\\"
                             L"{44BBA840-CC51-11CF-AAFA-00AA00B6015C}";
constexpr wchar_t kAppPath[] =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\msimn.exe";
constexpr wchar_t kProgramFile[] = L"\\msimn.exe";

std::wstring Read(const wchar_t* path, const wchar_t* name, const RegistryApi& api) {
    return RegistryKey::Open(RegistryHive::kLocalMachine, path, KEY_QUERY_VALUE, api)
        .ReadText(name)
        .value_or(L"");
}

} // namespace

std::wstring OutlookExpressVersion(const RegistryApi& api) {
    std::wstring version = Read(kProgram, L"MediaVer", api);
    if (version.empty()) {
        version = Read(kSetup, L"Version", api);
    }
    // Stored as "6,0,2900,5512".
    std::replace(version.begin(), version.end(), L',', L'.');
    return version;
}

std::wstring OutlookExpressPath(const RegistryApi& api) {
    std::wstring path = Read(kAppPath, L"", api);
    if (path.empty()) {
        const std::wstring folder = Read(kProgram, L"InstallRoot", api);
        path = folder.empty() ? L"" : folder + kProgramFile;
    }
    std::erase(path, L'"');
    return ExpandEnvironment(path);
}

} // namespace tervane
