// Installed adapters of the 9x family, on real keys below scratch hives.

#include "platform/adapters/Win9xAdapters.h"

#include "support/AdapterRegistry.h"
#include "support/OtherWindows.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using test::kServices;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"PCI\\VEN_10B7&DEV_9055\\000800";
constexpr wchar_t kDialUp[] = L"ROOT\\NET\\0000";
constexpr wchar_t kVirtual[] = L"ROOT\\NET\\0001";

RegistryBytes Bytes(unsigned char number) {
    return {number, 0, 0, 0};
}

class Win9xAdaptersTest : public testing::Test {
protected:
    RegistryKey Create(const std::wstring& path) const { return hives_.machine.Create(path); }
    RegistryKey Settings(const std::wstring& number) const {
        return Create(std::wstring(kServices) + L"Class\\NetTrans\\" + number);
    }

    // The registry sorts: a card, the dial-up adapter, a driver that only its name gives away.
    void MakeMachine() const {
        test::AddOldCard(hives_, {kCard, L"3Com Megahertz", L"0001", L"EL90XBC.SYS",
                                  L"PCI\\VEN_10B7&DEV_9055&REV_30,PCI\\VEN_10B7", L"0001"});
        test::AddOldCard(
            hives_, {kDialUp, L"Dial-Up Adapter", L"0000", L"pppmac.vxd", L"*PNP8387", L"0000"});
        test::AddOldCard(hives_, {kVirtual, L"Netz", L"0002", L"DFE530TX.SYS", L"", L""});
        const RegistryKey modem = Create(L"Enum\\PCI\\VEN_1&DEV_2\\00");
        modem.WriteText(L"Class", L"Modem");
        const RegistryKey shared = Create(kMachine);
        shared.WriteText(L"Domain", L"example.test");
        shared.WriteText(L"EnableDNS", L"1");
        shared.WriteText(L"NameServer", L"10.0.0.2,10.0.0.3");
        shared.WriteText(L"NameServer1", L"10.0.0.4");
        shared.WriteText(L"NodeType", L"8");
    }

    const std::wstring kMachine = std::wstring(kServices) + L"VxD\\MSTCP";
    const test::AdapterHives hives_;
};

TEST_F(Win9xAdaptersTest, ReadsEverythingOfACard) {
    MakeMachine();
    Settings(L"0001").WriteText(L"IPAddress", L"10.1.2.3,10.1.2.4");
    Settings(L"0001").WriteText(L"IPMask", L"255.255.0.0");
    Settings(L"0001").WriteText(L"DefaultGateway", L"10.1.0.1");
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
    EXPECT_EQ(L"10.1.2.3 255.255.0.0 10.1.0.1 static dns 10.0.0.2,10.0.0.3 wins 10.0.0.4",
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
    Create(std::wstring(L"Enum\\") + kVirtual + L"\\Bindings").WriteText(L"PPPOE\\0000", L"");
    Create(std::wstring(L"Enum\\") + kVirtual + L"\\Bindings").WriteText(L"NWLINK\\0000", L"");
    Create(L"Enum\\Network\\NWLINK\\0000\\Bindings").WriteText(L"PPPOE\\0000", L"");
    Create(L"Enum\\Network\\PPPOE\\0000\\Bindings").WriteText(L"NWLINK\\0000", L"");
    EXPECT_FALSE(List9xAdapters()[2].boundIndirectlyOrDirectlyToTcpip);
    Create(L"Enum\\Network\\PPPOE\\0000\\Bindings").WriteText(L"mstcp\\0005", L"");
    Create(L"Enum\\Network\\MSTCP\\0005").WriteText(L"Driver", L"NetTrans\\0005");
    Settings(L"0005").WriteText(L"IPAddress", L"10.5.5.5");
    const StaticAdapter adapter = List9xAdapters()[2];
    EXPECT_FALSE(adapter.boundToTcpip);
    EXPECT_TRUE(adapter.boundIndirectlyOrDirectlyToTcpip);
    EXPECT_EQ(L"10.5.5.5", adapter.ipAddress);
}

TEST_F(Win9xAdaptersTest, JudgesByTheBus) {
    test::AddOldCard(hives_, {L"ROOT\\A\\0", L"?", L"0000", L"", L"*PNP80D6,ISAPNP\\TCM5094"});
    test::AddOldCard(hives_, {L"ROOT\\B\\0", L"?", L"0001", L"", L"*PNP80D6"});
    Create(L"Enum\\ROOT\\B\\0").WriteTexts(L"CompatibleIDs", Texts{L"*PNP80D6", L"pcmcia\\x"});
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
    Create(L"Enum\\PCI\\A\\0").WriteText(L"Class", L"net");
    Create(L"Enum\\PCI\\B\\0").WriteText(L"Class", L"NET");
    Create(L"Enum\\PCI\\B\\0").WriteNumber(L"DeviceDesc", 1);
    Create(L"Enum\\PCI\\B\\0").WriteText(L"Driver", L"Net\\9999");
    Create(L"Enum\\PCI\\B\\0\\Bindings").WriteNumber(L"MSTCP\\9999", 1);
    Create(L"Enum\\PCI\\C\\0").WriteText(L"Class", L"NetTrans");
    Create(L"Enum\\PCI\\D").WriteText(L"Class", L"Net"); // no instance
    const std::vector<StaticAdapter> adapters = List9xAdapters();
    ASSERT_EQ(2u, adapters.size());
    EXPECT_EQ(L"Enum\\PCI\\A\\0", adapters[0].cookie);
    EXPECT_TRUE(adapters[0].isEnabled && adapters[0].isFunctional);
    EXPECT_TRUE(adapters[1].boundToTcpip);
    EXPECT_EQ(L"", adapters[1].settingsKey);
    EXPECT_EQ(L"Net\\9999", adapters[1].driver);
    EXPECT_EQ(L"0.0.0.0", adapters[1].ipAddress);
}

TEST_F(Win9xAdaptersTest, DISABLED_ListByVersion) {
    MakeMachine();
    test::ReportValue(static_cast<int>(ListStaticAdapters().size()));
}

} // namespace

TEST(StaticAdapterTest, ListsOldSystemsByTheDeviceTree) {
    if (!test::IsWine()) {
        GTEST_SKIP() << "only Wine can be told to be another Windows";
    }
    for (const char* version : {"win95", "win98", "winme"}) {
        EXPECT_EQ(3, test::ValueOn(version, "Win9xAdaptersTest.DISABLED_ListByVersion")) << version;
    }
    EXPECT_EQ(0, test::ValueOn("winxp", "Win9xAdaptersTest.DISABLED_ListByVersion"));
}

} // namespace tervane
