#include "platform/adapters/AdapterClassification.h"

#include "objects/connectivity/AdapterConfiguration.h"
#include "platform/adapters/HardwareAddress.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tervane {
namespace {

TEST(AdapterClassificationTest, JudgesByTheDescription) {
    const struct {
        const wchar_t* description;
        bool isEthernet;
    } rows[] = {
        {L"3Com EtherLink XL 10/100 PCI TX NIC (3C905B-TX)", true},
        {L"ETHERNET", true},
        {L"Realtek Fast Ethenet Controller", true},
        {L"Carte LAN ADAPTER", true},
        {L"Remote NDIS based Internet Sharing Device", true},
        {L"Linksys LNE100TX", true},
        {L"Tamarack TC5299C PC Card", true},
        {L"NE2000 Compatible", true},
        {L"NE 0000 Compatible", false},
        {L"Novel 4000", true},
        {L"Novell   1000", true},
        {L"Novelll 1000", false},
        {L"Compaq NetFlex-3 Controller", true},
        {L"Intel(R) PRO/1000 MT Network Connection", false},
        {L"Intel(R) PRO/1000 MT Desktop Adapter", true},
        {L"Intel PRO/100", true},
        {L"My Intel PRO/100", false},
        {L"Intel PRO/100+", false},
        {L"VIA Bus  Master Adapter", true},
        {L"VIA BusMaster Adapter", false},
        {L"Lucent Wireless PC LAN Card", true},
        {L"Wireless-G Notebook", false},
        {L"Efficient Networks Tango Virtual Miniport", true},
        {L"The Efficient Networks Virtual Miniport", false},
        {L"CATC USB Link", true},
        {L"WAN Miniport (PPP)", false},
        {L"Dial-Up Adapter", false},
        {L"", false},
        {L"ether\nnet", true},
    };
    for (const auto& [description, isEthernet] : rows) {
        EXPECT_EQ(isEthernet, IsEthernetDescription(description)) << description;
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
    std::vector<test::TestThread> threads;
    std::vector<int> found(8);
    for (int& count : found) {
        threads.emplace_back([&count] {
            for (int i = 0; i < 20; ++i) {
                count += IsEthernetDescription(L"intel pro/100") ? 1 : 0;
                count += IsEthernetDriver(L"EL90XBC.SYS") ? 1 : 0;
            }
        });
    }
    for (test::TestThread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::vector<int>(8, 40), found);
}

TEST(AdapterClassificationTest, JudgesByDriverAndBus) {
    for (const wchar_t* driver : {L"EtherExp.vxd", L"el90xbc.sys", L"EA20", L"ea10x", L"DFE530.sys",
                                  L"cben4", L"alcan5ln"}) {
        EXPECT_TRUE(IsEthernetDriver(driver)) << driver;
    }
    for (const wchar_t* driver : {L"pppmac.vxd", L"xel90x", L"", L"ea30"}) {
        EXPECT_FALSE(IsEthernetDriver(driver)) << driver;
    }
    EXPECT_TRUE(NamesPhysicalBus(L"*PNP80D6,ISAPNP\\TCM5094"));
    EXPECT_TRUE(NamesPhysicalBus(L"PCI\\VEN_10B7&DEV_9055"));
    EXPECT_TRUE(NamesPhysicalBus(L"Pcmcia\\3Com"));
    EXPECT_FALSE(NamesPhysicalBus(L"ROOT\\NET\\0000"));
    EXPECT_FALSE(NamesPhysicalBus(L"PCI"));
    EXPECT_FALSE(NamesPhysicalBus(L""));
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
    EXPECT_TRUE(IsPppAdapter(L"WAN Miniport (PPPOE)", L""));
    EXPECT_TRUE(IsPppAdapter(L"WAN-Miniport (IP)", L"NdisWan"));
    EXPECT_TRUE(IsPppAdapter(L"Microsoft Dial-Up Adapter", L""));
    EXPECT_TRUE(IsPppAdapter(L"DF\x00DC-Adapter", L"PPPMAC.VXD"));
    EXPECT_TRUE(IsPppAdapter(L"", L"AsyncMac"));
    EXPECT_TRUE(IsPppAdapter(L"Miniport r\x00E9seau \x00E9tendu WAN (SSTP)", L"RasSstp"));
    EXPECT_TRUE(IsPppAdapter(L"Miniport r\x00E9seau \x00E9tendu WAN (IKEv2)", L"RasAgileVpn"));
    EXPECT_FALSE(IsPppAdapter(L"3Com EtherLink XL", L"el90xbc.sys"));
    EXPECT_FALSE(IsPppAdapter(L"Microsoft TUN Miniport", L"tunmp"));
    EXPECT_FALSE(IsPppAdapter(L"", L""));
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
