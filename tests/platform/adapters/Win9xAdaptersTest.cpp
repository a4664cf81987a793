// Installed adapters of the 9x family, on real keys below scratch hives.

#include "platform/adapters/Win9xAdapters.h"

#include "support/AdapterRegistry.h"
#include "support/OtherWindows.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using test::kServices;

constexpr wchar_t kCard[] = L"PCI\\VEN_10B7&DEV_9055\\000800";
constexpr wchar_t kDialUp[] = L"ROOT\\NET\\0000";
constexpr wchar_t kVirtual[] = L"ROOT\\NET\\0001";

RegistryBytes Bytes(unsigned char number) {
    return {number, 0, 0, 0};
}

class Win9xAdaptersTest : public testing::Test {
protected:
    RegistryKey Create(const std::wstring& path) const { return hives_.machine.Create(path); }
    void Fill(const std::wstring& base, const wchar_t* text) const {
        hives_.machine.Fill(base, text);
    }

    // The registry sorts: a card, the dial-up adapter, a driver that only its name gives away.
    void MakeMachine() const {
        test::AddOldCard(hives_, {kCard, L"3Com Megahertz", L"0001", L"EL90XBC.SYS",
                                  L"PCI\\VEN_10B7&DEV_9055&REV_30,PCI\\VEN_10B7", L"0001"});
        test::AddOldCard(
            hives_, {kDialUp, L"Dial-Up Adapter", L"0000", L"pppmac.vxd", L"*PNP8387", L"0000"});
        test::AddOldCard(hives_, {kVirtual, L"Netz", L"0002", L"DFE530TX.SYS", L"", L""});
        Fill(L"Enum\\PCI\\", L"VEN_1&DEV_2\\00: Class=Modem");
        Fill(kServices, LR"(VxD\MSTCP: Domain=example.test; EnableDNS=1; NodeType=8
                            VxD\MSTCP: NameServer=10.0.0.2,10.0.0.3; NameServer1=10.0.0.4
                            VxD\MSTCP: NameServer2=10.0.0.5)");
    }

    const test::AdapterHives hives_;
};

TEST_F(Win9xAdaptersTest, ReadsEverythingOfACard) {
    MakeMachine();
    Fill(kServices, LR"(Class\NetTrans\0001: IPAddress=10.1.2.3,10.1.2.4; IPMask=255.255.0.0
                        Class\NetTrans\0001: DefaultGateway=10.1.0.1)");
    const std::vector<StaticAdapter> adapters = List9xAdapters();
    ASSERT_EQ(3u, adapters.size());
    const StaticAdapter& card = adapters[0];
    EXPECT_EQ(std::wstring(L"Enum\\") + kCard, card.cookie);
    EXPECT_EQ(L"3Com Megahertz", card.name);
    EXPECT_EQ(L"EL90XBC.SYS", card.driver);
    EXPECT_EQ(L"Ethernet", card.adapterType);
    EXPECT_TRUE(card.isEthernet && card.isEnabled && card.isFunctional);
    EXPECT_TRUE(card.boundToTcpip && card.boundIndirectlyOrDirectlyToTcpip);
    EXPECT_FALSE(card.isPpp);
    EXPECT_EQ(L"10.1.2.3 255.255.0.0 10.1.0.1 static dns 10.0.0.2,10.0.0.3 wins 10.0.0.4,10.0.0.5",
              test::SettingsOf(card));
    EXPECT_EQ(L"example.test", card.domainName);
    EXPECT_EQ(8, card.winsState);

    EXPECT_TRUE(adapters[1].isPpp && adapters[1].usingDhcp);
    EXPECT_FALSE(adapters[1].isEthernet);
    EXPECT_TRUE(adapters[2].isEthernet); // by its driver
    EXPECT_FALSE(adapters[2].boundIndirectlyOrDirectlyToTcpip || adapters[2].usingDhcp);
}

TEST_F(Win9xAdaptersTest, TellsWhatIsDisabledBrokenOrAbsent) {
    MakeMachine();
    test::SetProblem(hives_, L"pci\\ven_10b7&dev_9055\\000800", 0);
    test::SetProblem(hives_, kDialUp, 22);
    hives_.profile.Create(std::wstring(L"Enum\\") + kDialUp).WriteBytes(L"CSConfigFlags", Bytes(1));
    Create(std::wstring(L"Enum\\") + kVirtual).WriteBytes(L"CSConfigFlags", Bytes(2));
    const std::vector<StaticAdapter> adapters = List9xAdapters();
    ASSERT_EQ(3u, adapters.size());
    EXPECT_TRUE(adapters[0].isFunctional && adapters[0].isEnabled);
    EXPECT_FALSE(adapters[1].isFunctional || adapters[1].isEnabled);
    // Not among the devices that run.
    EXPECT_FALSE(adapters[2].isFunctional || adapters[2].isEnabled);
}

TEST_F(Win9xAdaptersTest, FollowsBindingsThroughOthersAndInCircles) {
    MakeMachine();
    Fill(L"Enum\\", LR"(ROOT\NET\0001\Bindings: PPPOE\0000=; NWLINK\0000=
                       Network\NWLINK\0000\Bindings: PPPOE\0000=
                       Network\PPPOE\0000\Bindings: NWLINK\0000=)");
    EXPECT_FALSE(List9xAdapters()[2].boundIndirectlyOrDirectlyToTcpip);
    Fill(L"Enum\\Network\\", LR"(PPPOE\0000\Bindings: mstcp\0005=
                                MSTCP\0005: Driver=NetTrans\0005)");
    Fill(kServices, L"Class\\NetTrans\\0005: IPAddress=10.5.5.5");
    const StaticAdapter adapter = List9xAdapters()[2];
    EXPECT_FALSE(adapter.boundToTcpip);
    EXPECT_TRUE(adapter.boundIndirectlyOrDirectlyToTcpip);
    EXPECT_EQ(L"10.5.5.5", adapter.ipAddress);
}

TEST_F(Win9xAdaptersTest, JudgesByTheBus) {
    test::AddOldCard(hives_, {L"ROOT\\A\\0", L"?", L"0000", L"", L"*PNP80D6,ISAPNP\\TCM5094"});
    test::AddOldCard(hives_, {L"ROOT\\B\\0", L"?", L"0001", L"", L"*PNP80D6"});
    Fill(L"Enum\\", L"ROOT\\B\\0: CompatibleIDs=[*PNP80D6|pcmcia\\x]");
    test::AddOldCard(hives_, {L"USB\\C\\0", L"?", L"0002", L"", L""});
    test::AddOldCard(hives_, {L"ROOT\\D\\0", L"?", L"0003", L"", L"*PNP80D6"});
    const std::vector<StaticAdapter> adapters = List9xAdapters();
    ASSERT_EQ(4u, adapters.size());
    EXPECT_TRUE(adapters[0].isEthernet);
    EXPECT_TRUE(adapters[1].isEthernet);
    EXPECT_FALSE(adapters[2].isEthernet);
    EXPECT_TRUE(adapters[3].isEthernet);
}

TEST_F(Win9xAdaptersTest, DropsNoAdapterForWhatItLacks) {
    Fill(L"Enum\\PCI\\", LR"(A\0: Class=net
                            B\0: Class=NET; DeviceDesc=#1; Driver=Net\9999
                            B\0\Bindings: MSTCP\9999=#1
                            C\0: Class=NetTrans
                            D: Class=Net)"); // no instance
    const std::vector<StaticAdapter> adapters = List9xAdapters();
    ASSERT_EQ(2u, adapters.size());
    EXPECT_EQ(L"Enum\\PCI\\A\\0", adapters[0].cookie);
    EXPECT_TRUE(adapters[0].isEnabled && adapters[0].isFunctional);
    EXPECT_TRUE(adapters[1].boundToTcpip);
    EXPECT_EQ(L"", adapters[1].settingsKey);
    EXPECT_EQ(L"Net\\9999", adapters[1].driver);
    EXPECT_EQ(L"0.0.0.0", adapters[1].ipAddress);
}

// On a computer that has been both: what each family keeps.
TEST_F(Win9xAdaptersTest, DISABLED_ListByVersion) {
    MakeMachine();
    test::AddNtCard(hives_, {L"{1}", L"0000", L"Card", L""});
    Fill(kServices, L"{1}\\Parameters\\Tcpip: EnableDHCP=#1");
    const auto adapters = ListStaticAdapters();
    test::ReportValue(static_cast<int>(10 * adapters.size()) + adapters[0].usingDhcp);
}

} // namespace

TEST(StaticAdapterTest, ListsByTheFamilyOfTheSystem) {
    TERVANE_ONLY_ON_WINE();
    for (const auto& [version, value] : {std::pair("win95", 31),
                                         {"win98", 31},
                                         {"winme", 31},
                                         {"nt40", 11},
                                         {"win2k", 10},
                                         {"winxp", 10},
                                         {"win2003", 10},
                                         {"win7", 10},
                                         {"win10", 10}}) {
        EXPECT_EQ(value, test::ValueOn(version, "Win9xAdaptersTest.DISABLED_ListByVersion"))
            << version;
    }
}

} // namespace tervane
