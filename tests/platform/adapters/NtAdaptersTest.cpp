// Installed adapters of the NT family, on real keys below scratch hives; the device installation is
// the system's own.

#include "platform/adapters/NtAdapters.h"

#include "support/AdapterRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tervane {
namespace {

using test::kInterfaces;
using test::kServices;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"{1}";
constexpr wchar_t kOther[] = L"{2}";
constexpr wchar_t kWan[] = L"{3}";
const std::wstring kCards = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\";
const std::wstring kEnum = L"System\\CurrentControlSet\\Enum\\";

class NtAdaptersTest : public testing::Test {
protected:
    void Fill(const std::wstring& base, const wchar_t* text) const {
        hives_.machine.Fill(base, text);
    }
    static StaticAdapter Find(const std::vector<StaticAdapter>& adapters,
                              const std::wstring& cookie) {
        const auto found = std::ranges::find(adapters, cookie, &StaticAdapter::cookie);
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
        Fill(kServices, LR"(Tcpip\Linkage: Bind=[\Device\{1}|\DEVICE\{2}|\Device\Psched1]
                            Tcpip\Parameters: Domain=example.test)");
    }

    const test::AdapterHives hives_;
};

TEST_F(NtAdaptersTest, ReadsEverythingOfACard) {
    MakeMachine();
    Fill(kServices, LR"(
        Tcpip\Parameters\Interfaces\{1}: EnableDHCP=#0; IPAddress=[10.1.2.3|10.1.2.4]
        Tcpip\Parameters\Interfaces\{1}: SubnetMask=[255.255.0.0|255.255.0.0]
        Tcpip\Parameters\Interfaces\{1}: DefaultGateway=[10.1.0.1]; DhcpIPAddress=192.168.0.7
        Tcpip\Parameters\Interfaces\{1}: NameServer=10.1.0.2,10.1.0.3 10.1.0.4
        NetBT\Parameters\Interfaces\Tcpip_{1}: NameServerList=[10.1.0.5|10.1.0.6]
        NetBT\Parameters: NodeType=#8)");
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
    Fill(kInterfaces, LR"({2}: EnableDHCP=#1; IPAddress=[10.9.9.9]; Domain=own.test
                          {2}: NameServerList=[10.9.0.1])");
    const StaticAdapter card = Find(List(), kOther);
    EXPECT_EQ(L"10.9.9.9 0.0.0.0 0.0.0.0 dhcp static dns 10.9.0.1", test::SettingsOf(card));
    EXPECT_EQ(L"own.test", card.domainName);
    EXPECT_TRUE(card.isEthernet);
    EXPECT_EQ(L"Ethernet", card.adapterType);
    EXPECT_TRUE(card.boundToTcpip); // in whatever case the binding is written
}

TEST_F(NtAdaptersTest, TellsWhatIsDisabledOrBroken) {
    MakeMachine();
    Fill(kEnum, LR"(PCI\VEN_8086&DEV_1039\3&61AAA01: ConfigFlags=#1
                    PCI\VEN_10B7&DEV_9055\3&61AAA02: ConfigFlags=#64)");
    hives_.profile.Fill(kEnum, L"ROOT\\MS_PPPOEMINIPORT\\0000: CSConfigFlags=#1");
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
    Fill(kEnum, L"PCI\\VEN_10B7&DEV_9055\\3&61AAA02: ConfigFlags=#64");
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
    Fill(kServices, LR"(Psched1\Linkage: Bind=[\Device\Bridge]
                        Bridge\Linkage: Bind=[\Device\{3}|\Device\Psched1|\Device\Bridge|\Device\]
                        Tcpip\Linkage\Disabled: Bind=[\Device\{2}])");
    const std::vector<StaticAdapter> adapters = List();
    EXPECT_TRUE(Find(adapters, kCard).boundToTcpip);
    EXPECT_FALSE(Find(adapters, kOther).boundToTcpip);
    EXPECT_FALSE(Find(adapters, kOther).boundIndirectlyOrDirectlyToTcpip);
    EXPECT_FALSE(Find(adapters, kWan).boundToTcpip);
    EXPECT_TRUE(Find(adapters, kWan).boundIndirectlyOrDirectlyToTcpip);
    // Each of a thousand components bound to all the others.
    std::wstring all = L"\\Device\\C0";
    for (int i = 1; i < 1000; ++i) {
        all += L"|\\Device\\C" + std::to_wstring(i);
    }
    for (int i = 0; i < 1000; i += 50) {
        const std::wstring line = L"C" + std::to_wstring(i) + L"\\Linkage: Bind=[" + all + L"]";
        Fill(kServices, line.c_str());
    }
    Fill(kServices, L"Psched1\\Linkage: Bind=[\\Device\\C0]");
    EXPECT_EQ(3u, List().size());
}

TEST_F(NtAdaptersTest, DropsNoAdapterForWhatItLacks) {
    Fill(kCards, LR"(1
                     2: ServiceName=#7
                     3: ServiceName={1}
                     4: ServiceName={1}
                     5: Title=(5) Some Ethernet Card)");
    Fill(std::wstring(L"System\\CurrentControlSet\\Control\\Class\\") + test::kNetworkClass,
         L"\\0003\n\\Properties");
    Fill(kInterfaces, L"{1}: EnableDHCP=yes; IPAddress=#1; SubnetMask=[]; NameServer=[10.0.0.1]");
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
    Fill(kCards, LR"(1: ServiceName=El90x1; Description=3Com Fast EtherLink XL Adapter
                     2: ServiceName=NdisWan4; Title=(2) Remote Access WAN Wrapper
                     3: ServiceName=Diva1; Title=(3) ISDN PPP card)");
    Fill(kServices, LR"(
        Diva1\Parameters: BusNumber=#0
        Diva1: Start=#4
        Tcpip\Linkage: Bind=[\Device\El90x1|\Device\NdisWan4]
        Tcpip\Parameters: NameServer=10.0.0.2 10.0.0.3
        El90x1\Parameters\Tcpip: EnableDHCP=#1; IPAddress=[10.0.0.9]
        NetBT\Adapters\El90x1: NameServer=10.0.0.4; NameServerBackup=10.0.0.5)");
    hives_.profile.Fill(kEnum, L"Root\\LEGACY_EL90X1\\0000: CSConfigFlags=#1");
    Fill(kEnum, L"Root\\LEGACY_NDISWAN4\\0000: Problem=#24");

    const std::vector<StaticAdapter> adapters = List(PlatformFamily::kNt4);
    ASSERT_EQ(3u, adapters.size());
    EXPECT_EQ(L"El90x1", adapters[0].cookie);
    EXPECT_EQ(L"El90x1", adapters[0].driver);
    EXPECT_EQ(L"10.0.0.9 0.0.0.0 0.0.0.0 dhcp static dns 10.0.0.2,10.0.0.3 wins 10.0.0.4,10.0.0.5",
              test::SettingsOf(adapters[0]));
    EXPECT_TRUE(adapters[0].boundToTcpip && adapters[0].isFunctional);
    EXPECT_FALSE(adapters[0].isEnabled);
    EXPECT_EQ(L"(2) Remote Access WAN Wrapper", adapters[1].name);
    EXPECT_TRUE(adapters[1].isPpp && adapters[1].isEnabled);
    EXPECT_FALSE(adapters[1].isFunctional);
    EXPECT_FALSE(adapters[2].isPpp || adapters[2].isEnabled);
}

} // namespace
} // namespace tervane
