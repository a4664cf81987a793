// What switching adapters to DHCP and back leaves in the registry, on real keys below scratch
// hives.

#include "objects/connectivity/AdapterConfiguration.h"

#include "platform/adapters/NtAdapters.h"
#include "platform/adapters/Win9xAdapters.h"
#include "support/AdapterRegistry.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using test::kInterfaces;
using test::kServices;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"{1}";

class AdapterConfigurationTest : public testing::Test {
protected:
    RegistryKey Create(const std::wstring& path) const { return hives_.machine.Create(path); }
    void Fill(const wchar_t* text) const { hives_.machine.Fill(kServices, text); }

    const test::AdapterHives hives_;
    const RegistryKey dhcpClient_ = Create(std::wstring(kServices) + L"DHCP");
};

class NtConfigurationTest : public AdapterConfigurationTest {
protected:
    NtConfigurationTest() {
        test::AddNtCard(hives_, {kCard, L"0000", L"Ethernet", L""});
        Set(L"EnableDHCP=#0; IPAddress=[10.0.0.9|10.0.0.10]; SubnetMask=[255.0.0.0|255.0.0.0]");
        Set(L"DefaultGateway=[10.0.0.1]; NameServer=10.0.0.2,10.0.0.3");
    }
    void Set(const std::wstring& values) const {
        hives_.machine.Fill(kInterfaces, L"{1}: " + values);
    }
    StaticAdapter Card() const { return ListNtAdapters(PlatformFamily::kXp).at(0); }
    std::wstring Now() const { return test::SettingsOf(Card()); }

    const RegistryKey settings_ = Create(std::wstring(kInterfaces) + kCard);
    const AdapterConfiguration configuration_{PlatformFamily::kXp};
};

TEST_F(NtConfigurationTest, SwitchesTheAddressThereAndBack) {
    dhcpClient_.WriteNumber(L"Start", 4);
    EXPECT_EQ(0u, configuration_.UseDhcpForAddress(Card(), true));
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), settings_.TypeOf(L"EnableDHCP"));
    EXPECT_EQ(2u, dhcpClient_.ReadNumber(L"Start"));
    dhcpClient_.WriteNumber(L"Start", 3);
    EXPECT_EQ(0u, configuration_.UseDhcpForAddress(Card(), true));
    EXPECT_EQ(3u, dhcpClient_.ReadNumber(L"Start"));
    // Nothing static is left that would win over the lease.
    EXPECT_EQ(L"0.0.0.0 0.0.0.0 0.0.0.0 dhcp static dns 10.0.0.2,10.0.0.3", Now());
    settings_.WriteText(L"DhcpIPAddress", L"192.168.0.7");
    EXPECT_EQ(0u, configuration_.UseDhcpForAddress(Card(), false));
    EXPECT_EQ((Texts{L"10.0.0.9", L"10.0.0.10"}), settings_.ReadTexts(L"IPAddress"));
    EXPECT_EQ(L"10.0.0.9 255.0.0.0 10.0.0.1 static dns 10.0.0.2,10.0.0.3", Now());
    for (const std::wstring& value : settings_.ValueNames()) {
        EXPECT_FALSE(value.starts_with(L"Tervane")) << value.size();
    }
}

TEST_F(NtConfigurationTest, KeepsTheLastLeaseWhereThereIsNoOtherAddress) {
    Set(L"IPAddress=[0.0.0.0]; DefaultGateway=[]; EnableDHCP=#1; DhcpIPAddress=169.254.7.7");
    EXPECT_EQ(2u, configuration_.UseDhcpForAddress(Card(), false));
    EXPECT_TRUE(Now().starts_with(L"0.0.0.0 ") && Card().usingDhcp);
    Set(L"DhcpIPAddress=192.168.0.7; DhcpSubnetMask=255.255.255.0");
    Set(L"DhcpDefaultGateway=[192.168.0.1]");
    EXPECT_EQ(0u, configuration_.UseDhcpForAddress(Card(), false));
    EXPECT_TRUE(Now().starts_with(L"192.168.0.7 255.255.255.0 192.168.0.1 s"));
    EXPECT_EQ(static_cast<DWORD>(REG_MULTI_SZ), settings_.TypeOf(L"IPAddress"));
}

TEST_F(NtConfigurationTest, SwitchesTheNameServersThereAndBack) {
    for (int i = 0; i < 2; ++i) { // a second time must not put aside that there are none
        EXPECT_EQ(0u, configuration_.UseDhcpForNameServers(Card(), true));
        EXPECT_FALSE(Card().isDnsStatic);
        EXPECT_EQ(L"", settings_.ReadText(L"NameServer"));
    }
    settings_.WriteText(L"DhcpNameServer", L"192.168.0.1 192.168.0.2");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0u, configuration_.UseDhcpForNameServers(Card(), false));
        EXPECT_TRUE(Now().ends_with(L" static dns 10.0.0.2,10.0.0.3")) << Now();
    }
    settings_.WriteText(L"NameServer", L"");
    EXPECT_EQ(0u, configuration_.UseDhcpForNameServers(Card(), false));
    EXPECT_TRUE(Now().ends_with(L" static dns 192.168.0.1,192.168.0.2")) << Now();
    settings_.WriteText(L"NameServer", L"");
    settings_.DeleteValue(L"DhcpNameServer");
    EXPECT_EQ(2u, configuration_.UseDhcpForNameServers(Card(), false));
}

TEST_F(NtConfigurationTest, ReportsWhatTheRegistryRefusesAndKeepsTheOldState) {
    auto refused = [](const wchar_t* value) {
        return AdapterConfiguration(PlatformFamily::kXp, test::RefuseValue(value));
    };
    const std::wstring before = Now();
    for (const wchar_t* value : {L"EnableDHCP", L"Tervane SubnetMask", L"Tervane IPAddress",
                                 L"SubnetMask", L"DefaultGateway", L"IPAddress"}) {
        EXPECT_EQ(5u, refused(value).UseDhcpForAddress(Card(), true));
        EXPECT_EQ(before, Now());
    }
    EXPECT_EQ(5u, refused(L"NameServer").UseDhcpForNameServers(Card(), true));
    EXPECT_EQ(5u, refused(L"Tervane NameServer").UseDhcpForNameServers(Card(), true));
    EXPECT_EQ(5u, refused(L"DefaultGateway").SetGateway(Card(), L"0.0.0.0"));
    dhcpClient_.WriteNumber(L"Start", 4);
    EXPECT_EQ(5u, refused(L"Start").UseDhcpForAddress(Card(), true));
    EXPECT_EQ(before, Now());
    EXPECT_EQ(2u, configuration_.SetGateway(StaticAdapter(), L"0.0.0.0"));
    test::DeleteTree(RegistryHive::kLocalMachine, std::wstring(kInterfaces) + kCard);
    EXPECT_EQ(2u, configuration_.UseDhcpForAddress(Card(), true));
}

TEST_F(NtConfigurationTest, ChangesTheWholeMachinesNameServersOnNt4) {
    hives_.machine.Fill(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\",
                        L"0000: ServiceName=El90x1");
    Fill(LR"(El90x1\Parameters\Tcpip: EnableDHCP=#0
             Tcpip\Parameters: NameServer=10.0.0.5)");
    auto card = [] { return ListNtAdapters(PlatformFamily::kNt4).at(0); };
    const AdapterConfiguration nt4(PlatformFamily::kNt4);
    EXPECT_TRUE(card().isDnsStatic);
    EXPECT_EQ(0u, nt4.UseDhcpForNameServers(card(), true));
    EXPECT_EQ(0u, nt4.UseDhcpForAddress(card(), true));
    EXPECT_EQ(0u, nt4.SetGateway(card(), L"10.0.0.1"));
    EXPECT_TRUE(card().usingDhcp && !card().isDnsStatic);
    EXPECT_EQ(L"10.0.0.1", card().defaultGateway);
    EXPECT_EQ(0u, nt4.UseDhcpForNameServers(card(), false));
    EXPECT_EQ(Texts{L"10.0.0.5"}, card().nameServers);
}

TEST_F(AdapterConfigurationTest, SwitchesOldSystemsByTheirAddress) {
    test::AddOldCard(hives_, {L"PCI\\A\\0", L"Ethernet", L"0000", L"", L"", L"0003"});
    const RegistryKey settings = Create(std::wstring(kServices) + L"Class\\NetTrans\\0003");
    auto card = [] { return List9xAdapters().at(0); };
    const AdapterConfiguration old(PlatformFamily::kWindows98);
    // It uses DHCP already, and there is nothing to go back to.
    EXPECT_EQ(0u, old.UseDhcpForAddress(card(), true));
    EXPECT_EQ(2u, old.UseDhcpForAddress(card(), false));
    EXPECT_EQ(2u, old.UseDhcpForNameServers(card(), false));
    Fill(LR"(Class\NetTrans\0003: IPAddress=10.0.0.9; IPMask=255.0.0.0; DefaultGateway=10.0.0.2
             VxD\MSTCP: EnableDNS=1; NameServer=10.0.0.2)");
    EXPECT_FALSE(card().usingDhcp);
    EXPECT_EQ(0u, old.UseDhcpForAddress(card(), true));
    EXPECT_EQ(0u, old.UseDhcpForAddress(card(), true));
    EXPECT_EQ(0u, old.UseDhcpForNameServers(card(), true));
    EXPECT_TRUE(card().usingDhcp && !card().isDnsStatic);
    EXPECT_EQ(L"0.0.0.0", settings.ReadText(L"IPMask"));
    EXPECT_EQ(L"0.0.0.0", settings.ReadText(L"DefaultGateway"));
    settings.WriteNumber(L"EnableDHCP", 1);
    EXPECT_EQ(0u, old.UseDhcpForAddress(card(), false));
    EXPECT_EQ(0u, old.UseDhcpForNameServers(card(), false));
    EXPECT_EQ(L"10.0.0.9 255.0.0.0 10.0.0.2 static dns 10.0.0.2", test::SettingsOf(card()));
    EXPECT_EQ(0u, old.SetGateway(card(), L"10.0.0.1"));
    EXPECT_EQ(L"10.0.0.1", settings.ReadText(L"DefaultGateway"));
    EXPECT_EQ(5u, AdapterConfiguration(PlatformFamily::kWindows98, test::RefuseValue(L"IPAddress"))
                      .UseDhcpForAddress(card(), true));
    EXPECT_EQ(L"10.0.0.9", card().ipAddress);
}

} // namespace
} // namespace tervane
