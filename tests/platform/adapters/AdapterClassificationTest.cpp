#include "platform/adapters/AdapterClassification.h"

#include "objects/connectivity/AdapterConfiguration.h"
#include "platform/adapters/HardwareAddress.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tervane {
namespace {

using Texts = std::vector<const wchar_t*>;

TEST(AdapterClassificationTest, JudgesByTheDescription) {
    for (const wchar_t* description :
         Texts{L"3Com EtherLink XL 10/100 PCI TX NIC (3C905B-TX)", L"ETHERNET",
               L"Realtek Fast Ethenet Controller", L"Carte LAN ADAPTER",
               L"Remote NDIS based Internet Sharing Device", L"Linksys LNE100TX",
               L"Tamarack TC5299C PC Card", L"NE2000 Compatible", L"Novel 4000", L"Novell   1000",
               L"Compaq NetFlex-3 Controller", L"Intel(R) PRO/1000 MT Desktop Adapter",
               L"Intel PRO/100", L"VIA Bus  Master Adapter", L"Lucent Wireless PC LAN Card",
               L"Efficient Networks Tango Virtual Miniport", L"CATC USB Link", L"ether\nnet"}) {
        EXPECT_TRUE(IsEthernetDescription(description)) << description;
        EXPECT_FALSE(IsExcludedDescription(description));
    }
    for (const wchar_t* description :
         Texts{L"NE 0000 Compatible", L"Novelll 1000", L"Intel(R) PRO/1000 MT Network Connection",
               L"My Intel PRO/100", L"Intel PRO/100+", L"VIA BusMaster Adapter",
               L"Wireless-G Notebook", L"The Efficient Networks Virtual Miniport",
               L"WAN Miniport (PPP)", L"Dial-Up Adapter", L""}) {
        EXPECT_FALSE(IsEthernetDescription(description)) << description;
        EXPECT_FALSE(IsExcludedDescription(description));
    }
}

// The tables are kept, so that no text may use them up for those that follow.
TEST(AdapterClassificationTest, SurvivesHostileDescriptions) {
    std::wstring endless;
    for (int i = 0; i < 20'000; ++i) {
        endless += L"tamarack netflex intel pro";
    }
    IsEthernetDescription(endless);
    EXPECT_TRUE(IsEthernetDescription(L"Tamarack PC Card"));
    EXPECT_TRUE(IsEthernetDescription(L"Compaq NetFlex Driver"));
    EXPECT_TRUE(IsEthernetDescription(L"Intel Pro Adapter"));
}

TEST(AdapterClassificationTest, IsMadeOnceForAllThreads) {
    std::atomic<int> found = 0;
    test::OnThreads(8, [&found](int) {
        for (int round = 0; round < 20; ++round) {
            found += IsEthernetDescription(L"intel pro/100") ? 1 : 0;
            found += IsEthernetDriver(L"EL90XBC.SYS") ? 1 : 0;
        }
    });
    EXPECT_EQ(8 * 40, found);
}

TEST(AdapterClassificationTest, JudgesByDriverAndBus) {
    for (const wchar_t* driver : Texts{L"EtherExp.vxd", L"el90xbc.sys", L"EA20", L"ea10x",
                                       L"DFE530.sys", L"cben4", L"alcan5ln"}) {
        EXPECT_TRUE(IsEthernetDriver(driver)) << driver;
    }
    for (const wchar_t* driver : Texts{L"pppmac.vxd", L"xel90x", L"", L"ea30"}) {
        EXPECT_FALSE(IsEthernetDriver(driver)) << driver;
    }
    for (const wchar_t* bus : Texts{L"*PNP80D6,ISAPNP\\TCM5094", L"PCI\\VEN_1", L"Pcmcia\\3Com"}) {
        EXPECT_TRUE(NamesPhysicalBus(bus)) << bus;
    }
    for (const wchar_t* bus : Texts{L"ROOT\\NET\\0000", L"PCI", L""}) {
        EXPECT_FALSE(NamesPhysicalBus(bus)) << bus;
    }
}

TEST(AdapterClassificationTest, JudgesByTheAddress) {
    for (const wchar_t* address :
         {L"44-45-53-54-12-34", L"44-45-53-54-00-00", L"00-C0-45-00-00-7F", L"00-c0-45-00-00-ff",
          L"00-03-8A-00-00-0F", L"00-53-45-00-00-00", L"00-41-BE-F7-5E-00", L"00-00-00-00-00-FF",
          L"00-50-77-01-8B-01", L"00-20-EA-09-EB-DF"}) {
        EXPECT_TRUE(IsNonEthernetAddress(address)) << address;
        EXPECT_TRUE(IsNonEthernetAdapter(address, L"3Com Ethernet"));
    }
    for (const wchar_t* address :
         {L"00C045000000", L"44-45-53-55-12-34", L"00-C0-45-00-01-00", L"00-10-5A-12-34-56", L"",
          L"44-45-53-54-12-3", L"44-45-53-54-12-345", L"4G-45-53-54-12-34", L"44-45-53-54-12-3 "}) {
        EXPECT_FALSE(IsNonEthernetAddress(address)) << address;
    }
    EXPECT_TRUE(IsNonEthernetAdapter(L"00-10-5A-12-34-56", L"USB Cable Modem"));
    EXPECT_FALSE(IsNonEthernetAdapter(L"00-10-5A-12-34-56", L"My USB Cable Modem"));
    EXPECT_FALSE(IsNonEthernetAdapter(L"", L"Ethernet"));
}

TEST(AdapterClassificationTest, KnowsDialUpAdapters) {
    for (const auto& [description, driver, isPpp] :
         {std::tuple(L"WAN Miniport (PPPOE)", L"", true),
          {L"WAN-Miniport (IP)", L"NdisWan", true},
          {L"Microsoft Dial-Up Adapter", L"", true},
          {L"DF\x00DC-Adapter", L"PPPMAC.VXD", true},
          {L"", L"AsyncMac", true},
          {L"Miniport r\x00E9seau \x00E9tendu WAN (SSTP)", L"RasSstp", true},
          {L"Miniport r\x00E9seau \x00E9tendu WAN (IKEv2)", L"RasAgileVpn", true},
          {L"3Com EtherLink XL", L"el90xbc.sys", false},
          {L"Microsoft TUN Miniport", L"tunmp", false},
          {L"", L"", false}}) {
        EXPECT_EQ(isPpp, IsPppAdapter(description, driver)) << description;
    }
}

TEST(HardwareAddressTest, IsWrittenAndRead) {
    const HardwareAddressBytes bytes = {0x00, 0x10, 0x5A, 0xFF, 0x0A, 0xB1};
    EXPECT_EQ(L"00-10-5A-FF-0A-B1", FormatHardwareAddress(bytes));
    EXPECT_EQ(bytes, ParseHardwareAddress(L"00-10-5a-fF-0A-b1"));
    EXPECT_EQ(bytes, ParseHardwareAddress(L"00:10:5A:FF:0A:B1"));
    EXPECT_EQ(L"", FormatHardwareAddress({}));
    const unsigned char eight[] = {1, 2, 3, 4, 5, 6, 7, 0x80};
    EXPECT_EQ(L"01-02-03-04-05-06-07-80", FormatHardwareAddress(eight));
    EXPECT_EQ(kNoHardwareAddress, FormatHardwareAddress(HardwareAddressBytes()));
    EXPECT_EQ(std::nullopt, ParseHardwareAddress(L"-00-10-5A-FF-0A-B"));
}

TEST(UsableAddressTest, LeavesOutAddressesThatLeadNowhere) {
    EXPECT_TRUE(IsUsableAddress(L"10.0.0.2"));
    EXPECT_TRUE(IsUsableAddress(L"16.9.254.1"));
    EXPECT_FALSE(IsUsableAddress(L"169.254.10.2"));
    EXPECT_FALSE(IsUsableAddress(L"0.0.0.0"));
    EXPECT_FALSE(IsUsableAddress(L""));
}

} // namespace
} // namespace tervane
