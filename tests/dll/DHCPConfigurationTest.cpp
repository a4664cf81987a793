// DHCPConfiguration through the built DLL, on computers played by scratch hives.

#include "platform/adapters/LiveAdapter.h"
#include "support/AdapterRegistry.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/OtherWindows.h"

namespace tervane::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"{card}";
constexpr wchar_t kGone[] = L"{gone}";
constexpr wchar_t kWan[] = L"{wan}";
constexpr wchar_t kClass[] =
    L"System\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";

class DHCPConfigurationTest : public ObjectTest {
protected:
    DHCPConfigurationTest() : ObjectTest(L"DHCPConfiguration") {
        AddNtCard(hives_, {kCard, L"0000", L"3Com EtherLink XL", L""});
        AddNtCard(hives_, {kGone, L"0001", L"An Ethernet card", L""});
        AddNtCard(hives_, {kWan, L"0002", L"WAN Miniport (Ethernet over PPP)", L""});
        DeleteTree(RegistryHive::kLocalMachine, std::wstring(kInterfaces) + kGone);
        Fill(L"Tcpip\\Linkage: Bind=[\\Device\\{card}|\\Device\\{gone}|\\Device\\{wan}]");
    }
    void Fill(const std::wstring& text) const { hives_.machine.Fill(kServices, text); }
    RegistryKey Settings(const std::wstring& instance) const {
        return hives_.machine.Create(kInterfaces + instance);
    }
    void WriteGateway(const std::wstring& instance) const {
        Settings(instance).WriteTexts(L"DefaultGateway", Texts{L"10.0.0.1"});
    }
    void ExpectGateway(const std::wstring& instance, const wchar_t* gateway) const {
        EXPECT_EQ(Texts{gateway}, Settings(instance).ReadTexts(L"DefaultGateway")) << instance;
    }

    const AdapterHives hives_;
};

TEST_F(DHCPConfigurationTest, TellsUnknownCookiesFromFailures) {
    Answers({{L"IsRebootNeeded", {}, L"0"},
             {L"LastErrorCode", {}, L"0"},
             {L"LastError", {}, L"UNKNOWN_COOKIE"}});
    for (const wchar_t* cookie : {L"", L"{}", L"{CARD}"}) {
        Answers({{L"EnableIPToUseDhcp", {cookie, true}, L"false"},
                 {L"EnableDnsToUseDhcp", {cookie, false}, L"false"}});
    }
    const std::vector<Exchange> failed = {{L"LastErrorCode", {}, L"2"}, // no such key
                                          {L"LastError", {}, L"GENERAL_ERROR"},
                                          {L"IsRebootNeeded", {}, L"1"}};
    Answers({{L"IsRebootNeeded", {}, L"0"}, {L"EnableIPToUseDhcp", {kGone, true}, L"false"}});
    Answers(failed);
    Answers({{L"EnableIPToUseDhcp", {kCard, true}, L"true"}});
    EXPECT_EQ(1u, Settings(kCard).ReadNumber(L"EnableDHCP"));
    Answers(failed); // a success changes nothing of that
    Answers({{L"EnableDnsToUseDhcp", {L"?", true}, L"false"},
             {L"LastErrorCode", {}, L"0"},
             {L"LastError", {}, L"UNKNOWN_COOKIE"},
             {L"IsRebootNeeded", {}, L"1"}});
}

TEST_F(DHCPConfigurationTest, SwitchesThereAndBack) {
    Settings(kCard).WriteText(L"NameServer", L"10.0.0.2");
    // There is no address to go back to yet.
    Answers({{L"EnableDnsToUseDhcp", {kCard, true}, L"true"},
             {L"IsRebootNeeded", {}, L"1"},
             {L"EnableIPToUseDhcp", {kCard, false}, L"false"},
             {L"LastErrorCode", {}, L"2"}});
    EXPECT_EQ(L"", Settings(kCard).ReadText(L"NameServer"));
    Settings(kCard).WriteTexts(L"IPAddress", Texts{L"10.0.0.9"});
    Answers({{L"EnableDnsToUseDhcp", {kCard, false}, L"true"},
             {L"EnableIPToUseDhcp", {kCard, true}, L"true"},
             {L"EnableIPToUseDhcp", {kCard, false}, L"true"}});
    EXPECT_EQ(L"10.0.0.2", Settings(kCard).ReadText(L"NameServer"));
    EXPECT_EQ(0u, Settings(kCard).ReadNumber(L"EnableDHCP"));
    // One is on for compiled callers.
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(S_OK, QueryFor<IDHCPConfiguration>(object_.Get())
                        ->EnableIPToUseDhcp(MakeBstr(kCard).Get(), 1, &result));
    EXPECT_EQ(VARIANT_TRUE, result);
    EXPECT_EQ(1u, Settings(kCard).ReadNumber(L"EnableDHCP"));
}

TEST_F(DHCPConfigurationTest, LeavesDialUpAdaptersAlone) {
    WriteGateway(kWan);
    Answers({{L"EnableIPToUseDhcp", {kWan, true}, L"true"},
             {L"EnableDnsToUseDhcp", {kWan, true}, L"true"},
             {L"GetRidOfStaticGateways", {}, L"true"},
             {L"IsRebootNeeded", {}, L"0"}});
    EXPECT_EQ(std::nullopt, Settings(kWan).TypeOf(L"EnableDHCP"));
    ExpectGateway(kWan, L"10.0.0.1");
}

TEST_F(DHCPConfigurationTest, RemovesStaticGateways) {
    Settings(kCard).WriteTexts(L"DefaultGateway", Texts{L"0.0.0.0"});
    Answers({{L"GetRidOfStaticGateways", {}, L"true"}, {L"IsRebootNeeded", {}, L"0"}});
    WriteGateway(kCard);
    Answers({{L"GetRidOfStaticGateways", {}, L"true"}, {L"IsRebootNeeded", {}, L"1"}});
    ExpectGateway(kCard, L"0.0.0.0");
    EXPECT_EQ(static_cast<DWORD>(REG_MULTI_SZ), Settings(kCard).TypeOf(L"DefaultGateway"));
}

// Cards that are not called what they are, and cards that are not in use.
TEST_F(DHCPConfigurationTest, RemovesTheGatewaysOfEthernetCardsInUse) {
    struct Row {
        NtCard card;
        DWORD type; // of the driver's class key; 0 for none
        DWORD flags;
        bool isRemoved;
        bool isBound = true;
    };
    const wchar_t* const unnamed = L"Gigabit Network Connection";
    std::vector<Row> rows = {{{L"{6}", L"1", unnamed, L""}, 6, 0, true},
                             {{L"{71}", L"2", unnamed, L""}, 71, 0, true},
                             {{L"{23}", L"3", unnamed, L""}, 23, 0, false},
                             {{L"{0}", L"4", unnamed, L""}, 0, 0, false},
                             {{L"{1}", L"5", L"Token Ring card", L""}, 0, 0, false},
                             {{L"{2}", L"6", L"Ethernet, not bound", L""}, 0, 0, false, false},
                             {{L"{3}", L"7", L"Ethernet, disabled", L"PCI\\A\\0"}, 0, 1, false},
                             {{L"{4}", L"8", L"Ethernet, broken", L"PCI\\B\\0"}, 0, 0x40, false}};
    for (const LiveAdapter& live : ListLiveAdapters().value_or(std::vector<LiveAdapter>())) {
        const std::wstring number = std::to_wstring(1 + rows.size());
        rows.push_back({{live.interfaceName, number, unnamed, L""}, 0, 0, live.hasEthernetType});
    }
    std::wstring bound = L"\\Device\\x";
    for (const Row& row : rows) {
        AddNtCard(hives_, row.card);
        WriteGateway(row.card.instance);
        if (row.type != 0) {
            hives_.machine.Create(kClass + row.card.number).WriteNumber(L"*IfType", row.type);
        }
        if (row.flags != 0) {
            hives_.machine.Create(L"System\\CurrentControlSet\\Enum\\" + row.card.device)
                .WriteNumber(L"ConfigFlags", row.flags);
        }
        if (row.isBound) {
            bound += L"|\\Device\\" + row.card.instance;
        }
    }
    Fill(L"Tcpip\\Linkage: Bind=[" + bound + L"]");
    Answers({{L"GetRidOfStaticGateways", {}, L"true"}});
    for (const Row& row : rows) {
        ExpectGateway(row.card.instance, row.isRemoved ? L"0.0.0.0" : L"10.0.0.1");
    }
}

TEST_F(DHCPConfigurationTest, DISABLED_RemovesTheGatewayOfAnOldSystem) {
    AddOldCard(hives_, {L"PCI\\A\\0", L"Ethernet", L"0000", L"", L"", L"0003"});
    const RegistryKey settings =
        hives_.machine.Create(std::wstring(kServices) + L"Class\\NetTrans\\0003");
    settings.WriteText(L"DefaultGateway", L"10.0.0.1");
    const wchar_t* const cookie = L"Enum\\PCI\\A\\0";
    Answers({{L"GetRidOfStaticGateways", {}, L"true"},
             {L"IsRebootNeeded", {}, L"1"},
             {L"EnableIPToUseDhcp", {cookie, true}, L"true"},
             {L"EnableIPToUseDhcp", {cookie, false}, L"false"},
             {L"LastErrorCode", {}, L"2"}});
    EXPECT_EQ(L"0.0.0.0", settings.ReadText(L"DefaultGateway"));
    ReportValue(HasFailure() ? 0 : 1);
}

} // namespace

TEST(DHCPConfigurationOnOldSystemsTest, RemovesStaticGateways) {
    TERVANE_ONLY_ON_WINE();
    for (const char* version : {"win95", "win98", "winme"}) {
        EXPECT_EQ(1,
                  ValueOn(version, "DHCPConfigurationTest.DISABLED_RemovesTheGatewayOfAnOldSystem"))
            << version;
    }
}

} // namespace tervane::test
