// The whole snapshot: of this machine, compared with what the plain calls and the kernel's own
// files say, and as every Windows that Wine can play; the network's names and the releases of
// Windows made up.

#include "objects/sysinfo/SystemSnapshot.h"

#include "ZelBase/text/AnsiText.h"
#include "objects/sysinfo/NetworkIdentity.h"
#include "objects/sysinfo/OsRelease.h"
#include "support/FakeIpHelper.h"
#include "support/OtherWindows.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>

namespace tervane {
namespace {

// The value after "key<tabs>:" in a file of the kernel's; empty where there is none.
std::string KernelValue(const char* file, const std::string& key) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(key, 0) == 0) {
            const std::size_t at = line.find_first_not_of(" \t:", key.size());
            return at == std::string::npos ? "" : line.substr(at);
        }
    }
    return "";
}

void ExpectDrives(const SystemSnapshot& snapshot) {
    ULARGE_INTEGER available = {};
    ULARGE_INTEGER total = {};
    ASSERT_TRUE(GetDiskFreeSpaceExA("C:\\", &available, &total, nullptr));
    const auto size = static_cast<double>(total.QuadPart >> 20);
    const auto free = static_cast<double>(available.QuadPart >> 20);
    ASSERT_GE(snapshot.systemDriveIndex, 0);
    EXPECT_EQ('C', snapshot.driveLetters.at(static_cast<std::size_t>(snapshot.systemDriveIndex)));
    EXPECT_NEAR(size, snapshot.systemDriveTotalSize, 1 + size / 2048);
    EXPECT_NEAR(free, snapshot.systemDriveFreeSpace, 64 + free / 2048); // others write meanwhile
    EXPECT_GE(snapshot.largestFreeDriveIndex, 0);
    EXPECT_GE(snapshot.largestFreeDriveSpace, snapshot.systemDriveFreeSpace - 64);
}

void ExpectNames(const SystemSnapshot& snapshot) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 200] = {};
    DWORD size = static_cast<DWORD>(std::size(name));
    GetComputerNameExW(ComputerNameDnsHostname, name, &size);
    EXPECT_STRCASEEQ(ZelBase::WideToAnsi(name).c_str(),
                     ZelBase::WideToAnsi(snapshot.hostName).c_str());
    const std::string server = KernelValue("Z:\\etc\\resolv.conf", "nameserver");
    if (server.find(':') == std::string::npos) { // the library tells no IPv6 addresses
        EXPECT_EQ(std::wstring(server.begin(), server.end()),
                  snapshot.dnsServers.substr(0, snapshot.dnsServers.find(L',')));
    }
}

void ExpectProcessorAndMemory(const SystemSnapshot& snapshot) {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    const std::string vendor = KernelValue("Z:\\proc\\cpuinfo", "vendor_id");
    EXPECT_EQ(std::wstring(vendor.begin(), vendor.end()), snapshot.cpuVendor);
    EXPECT_GT(snapshot.cpuSpeed, 100);
    EXPECT_NE(std::wstring::npos, snapshot.cpuDescription.find(L"Family"));
    EXPECT_EQ(system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_INTEL
                  ? std::to_wstring(system.wProcessorLevel)
                  : L"5",
              snapshot.cpuFamily);

    MEMORYSTATUS memory = {};
    GlobalMemoryStatus(&memory);
    EXPECT_EQ(static_cast<long>(memory.dwTotalPhys / 1048576 + 1), snapshot.ramSize);
    if (sizeof(void*) == 8) {
        const double kilobytes = std::atof(KernelValue("Z:\\proc\\meminfo", "MemTotal").c_str());
        EXPECT_NEAR(kilobytes / 1024, snapshot.ramSize, kilobytes / 1024 / 50);
    }
}

void ExpectVersion(const SystemSnapshot& snapshot) {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    ASSERT_TRUE(GetVersionExA(&version));
    EXPECT_EQ(static_cast<long>(version.dwMajorVersion), snapshot.osMajorNumber);
    EXPECT_EQ(static_cast<long>(version.dwMinorVersion), snapshot.osMinorNumber);
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) {
        EXPECT_EQ(-1, snapshot.osBuildNumber);
    } else {
        EXPECT_GT(snapshot.osBuildNumber, 1000);
    }
}

SystemSnapshot ExpectWholeSnapshot() {
    const SystemSnapshot snapshot = GatherSystemSnapshot(std::nullopt);
    ExpectDrives(snapshot);
    ExpectProcessorAndMemory(snapshot);
    ExpectVersion(snapshot);
    EXPECT_EQ(0, snapshot.usbPorts); // Wine has no host controllers
    EXPECT_EQ(0, snapshot.openUsbPorts);
    return snapshot;
}

TEST(SystemSnapshotTest, SaysWhatThePlainCallsSay) {
    TERVANE_ONLY_ON_WINE();
    const SystemSnapshot snapshot = ExpectWholeSnapshot();
    ExpectNames(snapshot);
    EXPECT_FALSE(snapshot.usbSupported);
    EXPECT_FALSE(snapshot.liveAdapters.empty());
}

TEST(SystemSnapshotTest, KeepsTheDriveLetters) {
    EXPECT_EQ("CQ", GatherSystemSnapshot("CQ").driveLetters);
    EXPECT_EQ(-1, GatherSystemSnapshot("Q").systemDriveIndex);
    EXPECT_EQ(0, GatherSystemSnapshot("Q").systemDriveTotalSize);
}

TEST(SystemSnapshotTest, DISABLED_Report) {
    const SystemSnapshot snapshot = ExpectWholeSnapshot();
    EXPECT_EQ(OsCode(ClassifyOs(CurrentVersion())), snapshot.os);
    if (!HasFailure()) {
        test::ReportValue(ClassifyOs(CurrentVersion()));
    }
}

TEST(SystemSnapshotTest, IsWholeOnEveryWindows) {
    TERVANE_ONLY_ON_WINE();
    const std::pair<const char*, const wchar_t*> rows[] = {
        {"win95", L"win95osr1"},      {"win98", L"win98se"},    {"winme", L"winme"},
        {"nt40", L"winnt4sp6"},       {"win2k", L"win2kgtsp3"}, {"winxp", L"winxppro"},
        {"win2003", L"win2ksrvrsp2"}, {"win7", L"winnt4sp1"},   {"win10", L"winnt4"},
    };
    for (const auto& [version, code] : rows) {
        EXPECT_STREQ(
            code, OsCode(test::ValueOn(version, "SystemSnapshotTest.DISABLED_Report").value_or(-1)))
            << version;
    }
}

TEST(SystemSnapshotTest, LacksOnlyWhatTheRegistryLacks) {
    const test::ScratchHive machine(RegistryHive::kLocalMachine);
    const SystemSnapshot bare = GatherSystemSnapshot(std::nullopt);
    EXPECT_GT(bare.cpuSpeed, 0);
    EXPECT_EQ(12u, bare.cpuVendor.size());
    EXPECT_EQ(L"", bare.cpuDescription);
    EXPECT_EQ(-1, bare.osBuildNumber);
    EXPECT_GT(bare.ramSize, 1);
    EXPECT_TRUE(bare.staticAdapters.empty());
    const auto version = machine.Create(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
    version.WriteText(L"CurrentBuildNumber", L"2195");
    EXPECT_EQ(2195, GatherSystemSnapshot("C").osBuildNumber);
}

// Network parameters of the test's choice.
class FakeParameters final : public test::FakeIpHelper {
public:
    std::optional<FIXED_INFO> parameters;

    DWORD GetNetworkParams(FIXED_INFO* table, ULONG*) const override {
        if (!parameters) {
            return ERROR_NOT_SUPPORTED;
        }
        *table = *parameters;
        return NO_ERROR;
    }
};

TEST(NetworkIdentityTest, FallsBackOnWhatIsSet) {
    using enum PlatformFamily;
    const test::ScratchHive machine(RegistryHive::kLocalMachine);
    FakeParameters library;
    std::vector<StaticAdapter> adapters;
    const auto told = [&](PlatformFamily family) {
        const auto identity = ReadNetworkIdentity(library, family, adapters);
        std::wstring text = identity.hostName + L"." + identity.domainName;
        for (const std::wstring& server : identity.dnsServers) {
            text += L" " + server;
        }
        return text;
    };
    EXPECT_EQ(L".", told(kXp));
    adapters.resize(3);
    adapters[0].nameServers = {L"10.0.0.1", L"10.0.0.2"};
    adapters[2].nameServers = {L"10.0.0.2", L"", L"10.0.0.3"};
    for (StaticAdapter& adapter : adapters) {
        adapter.isEnabled = adapter.boundIndirectlyOrDirectlyToTcpip = true;
    }
    EXPECT_EQ(L". 10.0.0.1 10.0.0.2 10.0.0.3", told(kXp));
    adapters[0].isEnabled = false;
    EXPECT_EQ(L". 10.0.0.2 10.0.0.3", told(kXp));
    adapters[2].boundIndirectlyOrDirectlyToTcpip = false;
    EXPECT_EQ(L".", told(kXp));

    machine.Fill(L"System\\CurrentControlSet\\Services\\", LR"(
        Tcpip\Parameters: Hostname=station; Domain=example.com
        Tcpip\Parameters: NameServer=10.1.0.1,10.1.0.2  10.1.0.1
        VxD\MSTCP: HostName=home; NameServer=,10.2.0.1)");
    EXPECT_EQ(L"station.example.com 10.1.0.1 10.1.0.2", told(kNt4));
    EXPECT_EQ(L"home. 10.2.0.1", told(kWindowsMe));

    library.parameters = FIXED_INFO();
    strcpy(library.parameters->HostName, "told");
    strcpy(library.parameters->DnsServerList.IpAddress.String, "10.3.0.1");
    IP_ADDR_STRING more = {};
    strcpy(more.IpAddress.String, "10.3.0.2");
    library.parameters->DnsServerList.Next = &more;
    EXPECT_EQ(L"told.example.com 10.3.0.1 10.3.0.2", told(kXp));
    // That there are none is an answer.
    library.parameters->DnsServerList = {};
    EXPECT_EQ(L"told.example.com", told(kXp));
    // A list without an end, of addresses without one, and names without one.
    FIXED_INFO& parameters = *library.parameters;
    memset(parameters.HostName, 'x', sizeof(parameters.HostName));
    memset(parameters.DomainName, 'y', sizeof(parameters.DomainName));
    memset(more.IpAddress.String, '9', sizeof(more.IpAddress.String));
    more.Next = parameters.DnsServerList.Next = &more;
    EXPECT_EQ(std::wstring(sizeof(parameters.HostName), L'x') + L"." +
                  std::wstring(sizeof(parameters.DomainName), L'y') + L" " +
                  std::wstring(sizeof(more.IpAddress.String), L'9'),
              told(kXp));
}

TEST(OsReleaseTest, ClassifiesEveryRow) {
    const std::pair<VersionRecord, const wchar_t*> rows[] = {
        {{1, 4, 0, "", 0, 0}, L"win95osr1"},
        {{1, 4, 0, " B", 0, 0}, L"win95osr2"},
        {{1, 4, 0, "  B", 0, 0}, L"win95osr1"},
        {{1, 4, 0, " C", 0, 0}, L"win95osr2.5"},
        {{1, 4, 1, "", 0, 0}, L"win98fe"},
        {{1, 4, 10, "", 0, 0}, L"win98fe"},
        {{1, 4, 10, " A ", 0, 0}, L"win98se"},
        {{1, 4, 11, "", 0, 0}, L"winme"},
        {{2, 4, 0, "Service Pack 6a", 0, 0}, L"winnt4sp6"},
        {{2, 4, 0, "Service Pack -1", 0, 0}, L"winnt4spgt6"},
        {{2, 4, 0, "Service Pack", 0, 0}, L"winnt4"},
        {{0, 3, 11, "", 0, 0}, L"error"}};
    for (const auto& [version, code] : rows) {
        EXPECT_STREQ(code, OsCode(ClassifyOs(version)));
    }
    EXPECT_STREQ(L"error", OsCode(ClassifyOs(std::nullopt)));
    // Without a service pack and with each.
    const std::pair<VersionRecord, const wchar_t*> releases[] = {
        {{2, 4, 0, "", 0, 0},
         L"winnt4 winnt4sp1 winnt4sp2 winnt4sp3 winnt4sp4 winnt4sp5 winnt4sp6 winnt4spgt6"},
        {{2, 6, 1, "", 0x80, 3}, L"winnt4 winnt4sp1"},
        {{2, 5, 0, "", 0, 1}, L"win2k win2ksp1 win2ksp2 win2ksp3 win2kgtsp3 win2kgtsp3"},
        {{2, 5, 2, "", 0, 2}, L"win2ksrvr win2ksrvrsp1 win2ksrvrsp2 win2ksrvrsp3 win2ksrvrgtwp3"},
        {{2, 5, 0, "", 0x2, 1},
         L"win2kadvsrvr win2kadvsrvrsp1 win2kadvsrvrsp2 win2kadvsrvrsp3 win2kadvsrvrgtsp3"},
        {{2, 5, 0, "", 0x82, 3},
         L"win2kdatacntrsrvr win2kdatacntrsrvrsp1 win2kdatacntrsrvrsp2 win2kdatacntrsrvrsp3 "
         L"win2kdatacntrsrvrgtsp3"},
        {{2, 5, 1, "", 0x200, 1}, L"winxpper winxpper"},
        {{2, 5, 1, "", 0x100, 1}, L"winxppro winxppro"}};
    for (auto [version, codes] : releases) {
        std::wistringstream words(codes);
        int pack = 0;
        for (std::wstring code; words >> code; ++pack) {
            version.serviceText = pack == 0 ? "" : "Service Pack " + std::to_string(pack);
            EXPECT_EQ(code, OsCode(ClassifyOs(version)));
        }
    }
}

TEST(OsReleaseTest, HasTwoCodesThatNoSystemGets) {
    EXPECT_STREQ(L"winxppersp1", OsCode(37));
    EXPECT_STREQ(L"winxpprosp1", OsCode(38));
    for (const int number : {-1, 0, 39}) {
        EXPECT_STREQ(L"error", OsCode(number));
    }
}

} // namespace
} // namespace tervane
