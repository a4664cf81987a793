// Installed adapters of the NT family, on real keys below scratch hives; the device installation is
// the system's own.

#include "platform/adapters/NtAdapters.h"

#include "support/AdapterRegistry.h"
#include "support/OtherWindows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tervane {
namespace {

using test::kInterfaces;
using test::kServices;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"{0A1B2C3D-0000-4000-8000-000000000001}";
constexpr wchar_t kOther[] = L"{0A1B2C3D-0000-4000-8000-000000000002}";
constexpr wchar_t kWan[] = L"{0A1B2C3D-0000-4000-8000-000000000003}";

class NtAdaptersTest : public testing::Test {
protected:
    RegistryKey Create(const std::wstring& path) const { return hives_.machine.Create(path); }
    static StaticAdapter Find(const std::vector<StaticAdapter>& adapters,
                              const std::wstring& cookie) {
        const auto found =
            std::find_if(adapters.begin(), adapters.end(),
                         [&](const StaticAdapter& adapter) { return adapter.cookie == cookie; });
        EXPECT_NE(adapters.end(), found) << cookie;
        return found == adapters.end() ? StaticAdapter() : *found;
    }
    static std::vector<StaticAdapter> List(PlatformFamily family = PlatformFamily::kXp) {
        return ListNtAdapters(family);
    }

    // A card, a disabled one, and a dial-up device that is not listed among the cards.
    void MakeMachine() const {
        test::AddNtCard(hives_, {kCard, L"0000", L"Intel(R) PRO/100 VE Network Connection",
                                 L"PCI\\VEN_8086&DEV_1039\\3&61AAA01"});
        test::AddNtCard(hives_, {kOther, L"0001", L"3Com EtherLink XL PCI",
                                 L"PCI\\VEN_10B7&DEV_9055\\3&61AAA02", L"EL90XBC"});
        test::AddNtCard(hives_, {kWan, L"0002", L"WAN Miniport (PPPOE)",
                                 L"ROOT\\MS_PPPOEMINIPORT\\0000", L"RasPppoe", false});
        Create(std::wstring(kServices) + L"Tcpip\\Linkage")
            .WriteTexts(L"Bind", Texts{std::wstring(L"\\Device\\") + kCard,
                                       std::wstring(L"\\DEVICE\\") + kOther, L"\\Device\\Psched1"});
        Create(std::wstring(kServices) + L"Tcpip\\Parameters")
            .WriteText(L"Domain", L"example.test");
    }

    const test::AdapterHives hives_;
};

TEST_F(NtAdaptersTest, ReadsEverythingOfACard) {
    MakeMachine();
    const RegistryKey settings = Create(std::wstring(kInterfaces) + kCard);
    settings.WriteNumber(L"EnableDHCP", 0);
    settings.WriteTexts(L"IPAddress", Texts{L"10.1.2.3", L"10.1.2.4"});
    settings.WriteTexts(L"SubnetMask", Texts{L"255.255.0.0", L"255.255.0.0"});
    settings.WriteTexts(L"DefaultGateway", Texts{L"10.1.0.1"});
    settings.WriteText(L"NameServer", L"10.1.0.2,10.1.0.3 10.1.0.4");
    settings.WriteText(L"DhcpIPAddress", L"192.168.0.7");
    Create(std::wstring(kServices) + L"NetBT\\Parameters\\Interfaces\\Tcpip_" + kCard)
        .WriteTexts(L"NameServerList", Texts{L"10.1.0.5", L"10.1.0.6"});
    Create(std::wstring(kServices) + L"NetBT\\Parameters").WriteNumber(L"NodeType", 8);
    const std::vector<StaticAdapter> adapters = List();
    ASSERT_EQ(3u, adapters.size());
    const StaticAdapter& card = adapters.front();
    EXPECT_EQ(kCard, card.cookie);
    EXPECT_EQ(kCard, card.serviceName);
    EXPECT_EQ(L"Intel(R) PRO/100 VE Network Connection", card.name);
    EXPECT_EQ(L"E100B", card.driver);
    EXPECT_TRUE(card.boundToTcpip && card.boundIndirectlyOrDirectlyToTcpip);
    EXPECT_TRUE(card.isEnabled && card.isFunctional);
    EXPECT_EQ(L"10.1.2.3 255.255.0.0 10.1.0.1 static dns 10.1.0.2,10.1.0.3,10.1.0.4 wins "
              L"10.1.0.5,10.1.0.6",
              test::SettingsOf(card));
    EXPECT_EQ(L"example.test", card.domainName);
    EXPECT_EQ(8, card.winsState);
    // The description is no Ethernet adapter's by any pattern.
    EXPECT_FALSE(card.isEthernet);
    EXPECT_EQ(L"Other", card.adapterType);
    const StaticAdapter& wan = adapters.back();
    EXPECT_EQ(kWan, wan.cookie);
    EXPECT_EQ(L"PPP", wan.adapterType);
    EXPECT_TRUE(wan.isPpp);
    EXPECT_FALSE(wan.isEthernet);
    EXPECT_FALSE(wan.boundIndirectlyOrDirectlyToTcpip);
    EXPECT_EQ(L"0.0.0.0", wan.ipAddress);
    EXPECT_EQ(L"00-00-00-00-00-00", wan.hardwareAddress);
}

TEST_F(NtAdaptersTest, KeepsTheStaticAddressWhileDhcpIsOn) {
    MakeMachine();
    const RegistryKey settings = Create(std::wstring(kInterfaces) + kOther);
    settings.WriteNumber(L"EnableDHCP", 1);
    settings.WriteTexts(L"IPAddress", Texts{L"10.9.9.9"});
    settings.WriteText(L"Domain", L"own.test");
    settings.WriteTexts(L"NameServerList", Texts{L"10.9.0.1"});
    const StaticAdapter card = Find(List(), kOther);
    EXPECT_EQ(L"10.9.9.9 0.0.0.0 0.0.0.0 dhcp static dns 10.9.0.1", test::SettingsOf(card));
    EXPECT_EQ(L"own.test", card.domainName);
    EXPECT_TRUE(card.isEthernet);
    EXPECT_EQ(L"Ethernet", card.adapterType);
    EXPECT_TRUE(card.boundToTcpip); // in whatever case the binding is written
}

TEST_F(NtAdaptersTest, TellsWhatIsDisabledOrBroken) {
    MakeMachine();
    const std::wstring devices = L"System\\CurrentControlSet\\Enum\\";
    Create(devices + L"PCI\\VEN_8086&DEV_1039\\3&61AAA01").WriteNumber(L"ConfigFlags", 1);
    Create(devices + L"PCI\\VEN_10B7&DEV_9055\\3&61AAA02").WriteNumber(L"ConfigFlags", 0x40);
    hives_.profile.Create(devices + L"ROOT\\MS_PPPOEMINIPORT\\0000")
        .WriteNumber(L"CSConfigFlags", 1);
    const std::vector<StaticAdapter> adapters = List();
    EXPECT_FALSE(Find(adapters, kCard).isEnabled);
    EXPECT_TRUE(Find(adapters, kCard).isFunctional);
    EXPECT_TRUE(Find(adapters, kOther).isEnabled);
    EXPECT_FALSE(Find(adapters, kOther).isFunctional); // its installation failed, once
    EXPECT_FALSE(Find(adapters, kWan).isEnabled);
}

CONFIGRET statusResult;
ULONG statusFlags;
ULONG statusProblem;

// What the running system says of a device is believed before that.
TEST_F(NtAdaptersTest, BelievesTheRunningSystemOfADevice) {
    MakeMachine();
    Create(L"System\\CurrentControlSet\\Enum\\PCI\\VEN_10B7&DEV_9055\\3&61AAA02")
        .WriteNumber(L"ConfigFlags", 0x40);
    DeviceApi api = DeviceApi::System();
    api.getDeviceStatus = [](PULONG status, PULONG problem, DEVINST, ULONG) WINAPI -> CONFIGRET {
        *status = statusFlags;
        *problem = statusProblem;
        return statusResult;
    };
    const struct {
        CONFIGRET result;
        ULONG status;
        ULONG problem;
        const char* told; // card enabled, functional, other functional
    } rows[] = {
        {CR_SUCCESS, DN_STARTED, 0, "111"},
        {CR_SUCCESS, DN_HAS_PROBLEM, CM_PROB_FAILED_START, "100"},
        {CR_SUCCESS, DN_HAS_PROBLEM | DN_STARTED, CM_PROB_NEED_RESTART, "100"},
        {CR_SUCCESS, DN_HAS_PROBLEM, CM_PROB_DISABLED, "011"},
        {CR_SUCCESS, 0, CM_PROB_DISABLED, "110"}, // which says nothing
        {CR_NO_SUCH_DEVNODE, DN_HAS_PROBLEM, CM_PROB_FAILED_START, "110"},
    };
    for (const auto& [result, status, problem, told] : rows) {
        statusResult = result;
        statusFlags = status;
        statusProblem = problem;
        const auto adapters = ListNtAdapters(PlatformFamily::kXp, api);
        std::string text;
        for (const bool fact : {Find(adapters, kCard).isEnabled, Find(adapters, kCard).isFunctional,
                                Find(adapters, kOther).isFunctional}) {
            text += fact ? "1" : "0";
        }
        EXPECT_EQ(told, text) << status << " " << problem;
    }
}

std::atomic<bool> stop = false;

TEST_F(NtAdaptersTest, StopsBetweenAdapters) {
    MakeMachine();
    DeviceApi api = DeviceApi::System();
    api.queryDosDevice = [](LPCSTR, LPSTR, DWORD) WINAPI -> DWORD {
        stop = true;
        SetLastError(ERROR_ACCESS_DENIED);
        return 0;
    };
    EXPECT_EQ(1u, ListNtAdapters(PlatformFamily::kXp, api, stop).size());
}

TEST_F(NtAdaptersTest, FollowsBindingsThroughOthersAndInCircles) {
    MakeMachine();
    const std::wstring services(kServices);
    Create(services + L"Psched1\\Linkage").WriteTexts(L"Bind", Texts{L"\\Device\\Bridge"});
    Create(services + L"Bridge\\Linkage")
        .WriteTexts(L"Bind", Texts{std::wstring(L"\\Device\\") + kWan, L"\\Device\\Psched1",
                                   L"\\Device\\Bridge", L"\\Device\\"});
    Create(services + L"Tcpip\\Linkage\\Disabled")
        .WriteTexts(L"Bind", Texts{std::wstring(L"\\Device\\") + kOther});
    const std::vector<StaticAdapter> adapters = List();
    EXPECT_TRUE(Find(adapters, kCard).boundToTcpip);
    EXPECT_FALSE(Find(adapters, kOther).boundToTcpip);
    EXPECT_FALSE(Find(adapters, kOther).boundIndirectlyOrDirectlyToTcpip);
    EXPECT_FALSE(Find(adapters, kWan).boundToTcpip);
    EXPECT_TRUE(Find(adapters, kWan).boundIndirectlyOrDirectlyToTcpip);
    // Each of a thousand components bound to all the others.
    Texts all;
    for (int i = 0; i < 1000; ++i) {
        all.push_back(L"\\Device\\C" + std::to_wstring(i));
    }
    for (int i = 0; i < 1000; i += 50) {
        Create(services + L"C" + std::to_wstring(i) + L"\\Linkage").WriteTexts(L"Bind", all);
    }
    Create(services + L"Psched1\\Linkage").WriteTexts(L"Bind", Texts{L"\\Device\\C0"});
    EXPECT_EQ(3u, List().size());
}

TEST_F(NtAdaptersTest, DropsNoAdapterForWhatItLacks) {
    const std::wstring cards = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\";
    Create(cards + L"1");
    Create(cards + L"2").WriteNumber(L"ServiceName", 7); // of the wrong type
    Create(cards + L"3").WriteText(L"ServiceName", kCard);
    Create(cards + L"4").WriteText(L"ServiceName", kCard); // listed twice
    Create(cards + L"5").WriteText(L"Title", L"[5] Some Ethernet Card");
    const std::wstring classes =
        L"System\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
    Create(classes + L"0003");
    Create(classes + L"Properties");
    const RegistryKey settings = Create(std::wstring(kInterfaces) + kCard);
    settings.WriteText(L"EnableDHCP", L"yes");
    settings.WriteNumber(L"IPAddress", 1);
    settings.WriteTexts(L"SubnetMask", Texts());
    settings.WriteTexts(L"NameServer", Texts{L"10.0.0.1"});
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, (std::wstring(kInterfaces) + kCard).c_str(),
                    L"DefaultGateway", REG_MULTI_SZ, L"10.0.0.254", 20); // without its end
    const std::vector<StaticAdapter> adapters = List();
    Texts cookies;
    for (const StaticAdapter& adapter : adapters) {
        cookies.push_back(adapter.cookie);
        EXPECT_TRUE(adapter.isEnabled && adapter.isFunctional);
    }
    EXPECT_EQ((Texts{L"NetworkCards\\1", L"NetworkCards\\2", kCard, L"NetworkCards\\5",
                     L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\0003"}),
              cookies);
    ASSERT_EQ(5u, adapters.size());
    EXPECT_EQ(L"0.0.0.0 0.0.0.0 10.0.0.254 static dns 10.0.0.1", test::SettingsOf(adapters[2]));
    EXPECT_TRUE(adapters[3].isEthernet);
}

TEST_F(NtAdaptersTest, KnowsTheLayoutOfNt4) {
    const std::wstring services(kServices);
    const std::wstring cards = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\";
    Create(cards + L"1").WriteText(L"ServiceName", L"El90x1");
    Create(cards + L"1").WriteText(L"Description", L"3Com Fast EtherLink XL Adapter");
    Create(cards + L"2").WriteText(L"ServiceName", L"NdisWan4");
    Create(cards + L"2").WriteText(L"Title", L"[2] Remote Access WAN Wrapper");
    Create(cards + L"3").WriteText(L"ServiceName", L"Diva1");
    Create(cards + L"3").WriteText(L"Title", L"[3] ISDN PPP card");
    Create(services + L"Diva1\\Parameters").WriteNumber(L"BusNumber", 0);
    Create(services + L"Diva1").WriteNumber(L"Start", 4);
    Create(services + L"Tcpip\\Linkage")
        .WriteTexts(L"Bind", Texts{L"\\Device\\El90x1", L"\\Device\\NdisWan4"});
    const RegistryKey settings = Create(services + L"El90x1\\Parameters\\Tcpip");
    settings.WriteNumber(L"EnableDHCP", 1);
    settings.WriteTexts(L"IPAddress", Texts{L"10.0.0.9"});
    Create(services + L"Tcpip\\Parameters").WriteText(L"NameServer", L"10.0.0.2 10.0.0.3");
    const RegistryKey wins = Create(services + L"NetBT\\Adapters\\El90x1");
    wins.WriteText(L"NameServer", L"10.0.0.4");
    wins.WriteText(L"NameServerBackup", L"10.0.0.5");
    const std::wstring device = L"System\\CurrentControlSet\\Enum\\Root\\LEGACY_";
    hives_.profile.Create(device + L"EL90X1\\0000").WriteNumber(L"CSConfigFlags", 1);
    Create(device + L"NDISWAN4\\0000").WriteNumber(L"Problem", 24);

    const std::vector<StaticAdapter> adapters = List(PlatformFamily::kNt4);
    ASSERT_EQ(3u, adapters.size());
    EXPECT_EQ(L"El90x1", adapters[0].cookie);
    EXPECT_EQ(L"El90x1", adapters[0].driver);
    EXPECT_EQ(L"10.0.0.9 0.0.0.0 0.0.0.0 dhcp static dns 10.0.0.2,10.0.0.3 wins 10.0.0.4,10.0.0.5",
              test::SettingsOf(adapters[0]));
    EXPECT_TRUE(adapters[0].boundToTcpip && adapters[0].isFunctional);
    EXPECT_FALSE(adapters[0].isEnabled);
    EXPECT_EQ(L"[2] Remote Access WAN Wrapper", adapters[1].name);
    EXPECT_TRUE(adapters[1].isPpp && adapters[1].isEnabled);
    EXPECT_FALSE(adapters[1].isFunctional);
    EXPECT_FALSE(adapters[2].isPpp || adapters[2].isEnabled);
}

TEST_F(NtAdaptersTest, DISABLED_ListByVersion) {
    MakeMachine();
    Create(std::wstring(kServices) + kCard + L"\\Parameters\\Tcpip").WriteNumber(L"EnableDHCP", 1);
    int value = 0;
    for (const StaticAdapter& adapter : ListStaticAdapters()) {
        value += 10 + (adapter.usingDhcp ? 1 : 0);
    }
    test::ReportValue(value);
}

} // namespace

TEST(StaticAdapterTest, ListsByTheFamilyOfTheSystem) {
    if (!test::IsWine()) {
        GTEST_SKIP() << "only Wine can be told to be another Windows";
    }
    for (const auto& [version, value] : {std::pair("nt40", 21),
                                         {"win2k", 30},
                                         {"winxp", 30},
                                         {"win2003", 30},
                                         {"win7", 30},
                                         {"win10", 30},
                                         {"win98", 0}}) {
        EXPECT_EQ(value, test::ValueOn(version, "NtAdaptersTest.DISABLED_ListByVersion"))
            << version;
    }
}

} // namespace tervane
