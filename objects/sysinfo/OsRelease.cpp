#include "objects/sysinfo/OsRelease.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace tervane {
namespace {

constexpr unsigned kSuiteEnterprise = 0x2;
constexpr unsigned kSuiteDatacenter = 0x80;
constexpr unsigned kSuitePersonal = 0x200;
constexpr unsigned kWorkstation = 1;

// 0 without one, and for what cannot be read.
int ServicePack(const VersionRecord& version) {
    constexpr std::string_view kBegin = "Service Pack";
    const std::string& text = version.serviceText;
    return text.starts_with(kBegin) ? std::atoi(text.c_str() + kBegin.size()) : 0;
}

// The releases of one edition follow each other by service pack; the last stands for all later
// ones.
int WithServicePack(int first, int servicePack, int newestPack) {
    return servicePack >= 0 && servicePack <= newestPack ? first + servicePack
                                                         : first + newestPack + 1;
}

bool BeginsWithLetter(const std::string& serviceText, char letter) {
    // The second place too: the system writes " A ".
    return serviceText.substr(0, 2).find(letter) != std::string::npos;
}

int Classify9x(const VersionRecord& version) {
    if (version.minor > 10) {
        return 6;
    }
    if (version.minor > 0) {
        return BeginsWithLetter(version.serviceText, 'A') ? 5 : 4;
    }
    if (BeginsWithLetter(version.serviceText, 'C')) {
        return 3;
    }
    return BeginsWithLetter(version.serviceText, 'B') ? 2 : 1;
}

int ClassifyWindows2000(const VersionRecord& version) {
    constexpr int kNewestPack = 3;
    const int servicePack = ServicePack(version);
    if (version.suite & kSuiteDatacenter) {
        return WithServicePack(30, servicePack, kNewestPack);
    }
    if (version.suite & kSuiteEnterprise) {
        return WithServicePack(25, servicePack, kNewestPack);
    }
    if (version.productType != kWorkstation) {
        return WithServicePack(20, servicePack, kNewestPack);
    }
    return WithServicePack(15, servicePack, kNewestPack);
}

int ClassifyNt(const VersionRecord& version) {
    if (version.major != 5) {
        return WithServicePack(7, ServicePack(version), 6);
    }
    if (version.minor == 1) {
        // Deliberately without the service pack: 37 and 38 are never told.
        return version.suite & kSuitePersonal ? 35 : 36;
    }
    return ClassifyWindows2000(version);
}

} // namespace

int ClassifyOs(const std::optional<VersionRecord>& version) {
    if (!version) {
        return 0;
    }
    switch (version->platform) {
    case 1:
        return Classify9x(*version);
    case 2:
        return ClassifyNt(*version);
    default:
        return 0;
    }
}

const wchar_t* OsCode(int number) noexcept {
    // Scripts compare these texts, the misspelt "win2ksrvrgtwp3" included.
    static const wchar_t* const kCodes[] = {
        L"win95osr1",
        L"win95osr2",
        L"win95osr2.5",
        L"win98fe",
        L"win98se",
        L"winme",
        L"winnt4",
        L"winnt4sp1",
        L"winnt4sp2",
        L"winnt4sp3",
        L"winnt4sp4",
        L"winnt4sp5",
        L"winnt4sp6",
        L"winnt4spgt6",
        L"win2k",
        L"win2ksp1",
        L"win2ksp2",
        L"win2ksp3",
        L"win2kgtsp3",
        L"win2ksrvr",
        L"win2ksrvrsp1",
        L"win2ksrvrsp2",
        L"win2ksrvrsp3",
        L"win2ksrvrgtwp3",
        L"win2kadvsrvr",
        L"win2kadvsrvrsp1",
        L"win2kadvsrvrsp2",
        L"win2kadvsrvrsp3",
        L"win2kadvsrvrgtsp3",
        L"win2kdatacntrsrvr",
        L"win2kdatacntrsrvrsp1",
        L"win2kdatacntrsrvrsp2",
        L"win2kdatacntrsrvrsp3",
        L"win2kdatacntrsrvrgtsp3",
        L"winxpper",
        L"winxppro",
        L"winxppersp1",
        L"winxpprosp1",
    };
    const bool known = number >= 1 && number <= static_cast<int>(std::size(kCodes));
    return known ? kCodes[number - 1] : L"error";
}

} // namespace tervane

// Apart from the classification, which knows no Windows.
namespace tervane {

std::optional<VersionRecord> CurrentVersion() {
    // Older systems know the first part of the record only, and refuse the whole by its size.
    OSVERSIONINFOEXA record = {};
    static_assert(sizeof(OSVERSIONINFOEXA) == 156 && sizeof(OSVERSIONINFOA) == 148);
    auto* version = reinterpret_cast<OSVERSIONINFOA*>(&record);
    record.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXA);
    if (!GetVersionExA(version)) {
        record.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        if (!GetVersionExA(version)) {
            return std::nullopt;
        }
    }
    const char* text = std::data(record.szCSDVersion);
    return VersionRecord{
        record.dwPlatformId,   record.dwMajorVersion,
        record.dwMinorVersion, std::string(text, strnlen(text, std::size(record.szCSDVersion))),
        record.wSuiteMask,     record.wProductType};
}

} // namespace tervane
