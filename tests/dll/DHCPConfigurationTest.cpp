// DHCPConfiguration through the built DLL, on computers played by scratch hives.

#include "platform/adapters/LiveAdapter.h"
#include "support/AdapterRegistry.h"
#include "support/OtherWindows.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr wchar_t kCard[] = L"{0A1B2C3D-0000-4000-8000-000000000001}";
constexpr wchar_t kGone[] = L"{0A1B2C3D-0000-4000-8000-000000000002}";
constexpr wchar_t kWan[] = L"{0A1B2C3D-0000-4000-8000-000000000003}";

class DHCPConfigurationTest : public testing::Test {
protected:
    DHCPConfigurationTest() {
        AddNtCard(hives_, {kCard, L"0000", L"3Com EtherLink XL", L""});
        AddNtCard(hives_, {kGone, L"0001", L"An Ethernet card", L""});
        AddNtCard(hives_, {kWan, L"0002", L"WAN Miniport (Ethernet over PPP)", L""});
        DeleteTree(RegistryHive::kLocalMachine, std::wstring(kInterfaces) + kGone);
        hives_.machine.Create(std::wstring(kServices) + L"Tcpip\\Linkage")
            .WriteTexts(L"Bind", Texts{std::wstring(L"\\Device\\") + kCard,
                                       std::wstring(L"\\Device\\") + kGone,
                                       std::wstring(L"\\Device\\") + kWan});
    }
    RegistryKey Settings(const wchar_t* instance) const {
        return hives_.machine.Create(std::wstring(kInterfaces) + instance);
    }
    long Number(const wchar_t* property) const { return Read(object_.Get(), property).Number(); }
    std::wstring Error() const { return Read(object_.Get(), L"LastError").Text(); }
    long Switch(const wchar_t* member, const std::wstring& cookie, bool use) const {
        return Call(object_.Get(), member, {cookie, use}).Number();
    }
    long RemoveGateways() const { return Call(object_.Get(), L"GetRidOfStaticGateways").Number(); }
    void WriteGateway(const wchar_t* instance) const {
        Settings(instance).WriteTexts(L"DefaultGateway", Texts{L"10.0.0.1"});
    }

    const AdapterHives hives_;
    const Apartment apartment_;
    const ComPtr<IDispatch> object_ = TestComponent::Get().Create(__uuidof(::DHCPConfiguration));
};

TEST_F(DHCPConfigurationTest, TellsUnknownCookiesFromFailures) {
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    EXPECT_EQ(0, Number(L"LastErrorCode"));
    EXPECT_EQ(L"UNKNOWN_COOKIE", Error());
    for (const wchar_t* cookie : {L"", L"{}", L"{0a1b2c3d-0000-4000-8000-000000000001}"}) {
        EXPECT_EQ(0, Switch(L"EnableIPToUseDhcp", cookie, true)) << cookie;
        EXPECT_EQ(0, Switch(L"EnableDnsToUseDhcp", cookie, false)) << cookie;
    }
    EXPECT_EQ(L"UNKNOWN_COOKIE", Error());
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    // Its settings are gone.
    EXPECT_EQ(0, Switch(L"EnableIPToUseDhcp", kGone, true));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Number(L"LastErrorCode"));
    EXPECT_EQ(L"GENERAL_ERROR", Error());
    EXPECT_EQ(1, Number(L"IsRebootNeeded"));
    // A success changes nothing of that.
    EXPECT_EQ(-1, Switch(L"EnableIPToUseDhcp", kCard, true));
    EXPECT_EQ(1u, Settings(kCard).ReadNumber(L"EnableDHCP"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Number(L"LastErrorCode"));
    EXPECT_EQ(L"GENERAL_ERROR", Error());
    EXPECT_EQ(0, Switch(L"EnableDnsToUseDhcp", L"?", true));
    EXPECT_EQ(0, Number(L"LastErrorCode"));
    EXPECT_EQ(L"UNKNOWN_COOKIE", Error());
    EXPECT_EQ(1, Number(L"IsRebootNeeded"));
}

TEST_F(DHCPConfigurationTest, SwitchesThereAndBack) {
    Settings(kCard).WriteText(L"NameServer", L"10.0.0.2");
    EXPECT_EQ(-1, Switch(L"EnableDnsToUseDhcp", kCard, true));
    EXPECT_EQ(1, Number(L"IsRebootNeeded"));
    EXPECT_EQ(L"", Settings(kCard).ReadText(L"NameServer"));
    EXPECT_EQ(-1, Switch(L"EnableDnsToUseDhcp", kCard, false));
    EXPECT_EQ(L"10.0.0.2", Settings(kCard).ReadText(L"NameServer"));
    // There is no address to go back to yet.
    EXPECT_EQ(0, Switch(L"EnableIPToUseDhcp", kCard, false));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Number(L"LastErrorCode"));
    Settings(kCard).WriteTexts(L"IPAddress", Texts{L"10.0.0.9"});
    EXPECT_EQ(-1, Switch(L"EnableIPToUseDhcp", kCard, true));
    EXPECT_EQ(-1, Switch(L"EnableIPToUseDhcp", kCard, false));
    EXPECT_EQ(0u, Settings(kCard).ReadNumber(L"EnableDHCP"));
}

TEST_F(DHCPConfigurationTest, LeavesDialUpAdaptersAlone) {
    WriteGateway(kWan);
    EXPECT_EQ(-1, Switch(L"EnableIPToUseDhcp", kWan, true));
    EXPECT_EQ(-1, Switch(L"EnableDnsToUseDhcp", kWan, true));
    EXPECT_EQ(-1, RemoveGateways());
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    EXPECT_EQ(std::nullopt, Settings(kWan).TypeOf(L"EnableDHCP"));
    EXPECT_EQ(Texts{L"10.0.0.1"}, Settings(kWan).ReadTexts(L"DefaultGateway"));
}

TEST_F(DHCPConfigurationTest, RemovesStaticGateways) {
    Settings(kCard).WriteTexts(L"DefaultGateway", Texts{L"0.0.0.0"});
    EXPECT_EQ(-1, RemoveGateways());
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    WriteGateway(kCard);
    EXPECT_EQ(-1, RemoveGateways());
    EXPECT_EQ(1, Number(L"IsRebootNeeded"));
    EXPECT_EQ(Texts{L"0.0.0.0"}, Settings(kCard).ReadTexts(L"DefaultGateway"));
    EXPECT_EQ(static_cast<DWORD>(REG_MULTI_SZ), Settings(kCard).TypeOf(L"DefaultGateway"));
}

// Cards that are not called what they are.
TEST_F(DHCPConfigurationTest, RemovesStaticGatewaysByInterfaceType) {
    struct Row {
        std::wstring instance;
        DWORD type; // of the driver's class key; 0 for none
        bool isRemoved;
    };
    std::vector<Row> rows = {
        {L"{6}", 6, true}, {L"{71}", 71, true}, {L"{23}", 23, false}, {L"{0}", 0, false}};
    for (const LiveAdapter& live : ListLiveAdapters().value_or(std::vector<LiveAdapter>())) {
        rows.push_back({live.interfaceName, 0, live.hasEthernetType});
    }
    Texts bound;
    for (const Row& row : rows) {
        const std::wstring number = std::to_wstring(1000 + bound.size());
        AddNtCard(hives_, {row.instance, number, L"Gigabit Network Connection", L""});
        if (row.type != 0) {
            hives_.machine
                .Create(L"System\\CurrentControlSet\\Control\\Class\\"
                        L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
                        number)
                .WriteNumber(L"*IfType", row.type);
        }
        WriteGateway(row.instance.c_str());
        bound.push_back(L"\\Device\\" + row.instance);
    }
    hives_.machine.Create(std::wstring(kServices) + L"Tcpip\\Linkage").WriteTexts(L"Bind", bound);
    EXPECT_EQ(-1, RemoveGateways());
    for (const Row& row : rows) {
        EXPECT_EQ(Texts{row.isRemoved ? L"0.0.0.0" : L"10.0.0.1"},
                  Settings(row.instance.c_str()).ReadTexts(L"DefaultGateway"))
            << row.instance;
    }
}

TEST_F(DHCPConfigurationTest, LeavesTheGatewaysOfAdaptersThatAreNotInUse) {
    const std::wstring others[] = {L"{1}", L"{2}", L"{3}", L"{4}"};
    AddNtCard(hives_, {others[0], L"0010", L"Token Ring card", L""});
    AddNtCard(hives_, {others[1], L"0011", L"Ethernet card that is not bound", L""});
    AddNtCard(hives_, {others[2], L"0012", L"Ethernet card that is disabled", L"PCI\\A\\0"});
    AddNtCard(hives_, {others[3], L"0013", L"Ethernet card that is broken", L"PCI\\B\\0"});
    const std::wstring devices = L"System\\CurrentControlSet\\Enum\\PCI\\";
    hives_.machine.Create(devices + L"A\\0").WriteNumber(L"ConfigFlags", 1);
    hives_.machine.Create(devices + L"B\\0").WriteNumber(L"ConfigFlags", 0x40);
    hives_.machine.Create(std::wstring(kServices) + L"Tcpip\\Linkage")
        .WriteTexts(L"Bind", Texts{L"\\Device\\{1}", L"\\Device\\{3}", L"\\Device\\{4}"});
    for (const std::wstring& instance : others) {
        WriteGateway(instance.c_str());
    }
    EXPECT_EQ(-1, RemoveGateways());
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    for (const std::wstring& instance : others) {
        EXPECT_EQ(Texts{L"10.0.0.1"}, Settings(instance.c_str()).ReadTexts(L"DefaultGateway"))
            << instance;
    }
}

TEST_F(DHCPConfigurationTest, TakesOneForOnAndANullCookieForTheEmptyOne) {
    const auto configuration = QueryFor<IDHCPConfiguration>(object_.Get());
    ASSERT_TRUE(configuration);
    const UniqueBstr cookie = MakeBstr(kCard);
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(S_OK, configuration->EnableIPToUseDhcp(cookie.Get(), 1, &result));
    EXPECT_EQ(VARIANT_TRUE, result);
    EXPECT_EQ(1u, Settings(kCard).ReadNumber(L"EnableDHCP"));
    EXPECT_EQ(S_OK, configuration->EnableIPToUseDhcp(nullptr, VARIANT_TRUE, &result));
    EXPECT_EQ(VARIANT_FALSE, result);
}

TEST_F(DHCPConfigurationTest, DISABLED_RemovesTheGatewayOfAnOldSystem) {
    AddOldCard(hives_, {L"PCI\\A\\0", L"Ethernet", L"0000", L"", L"", L"0003"});
    const RegistryKey settings =
        hives_.machine.Create(std::wstring(kServices) + L"Class\\NetTrans\\0003");
    settings.WriteText(L"DefaultGateway", L"10.0.0.1");
    const std::wstring cookie = L"Enum\\PCI\\A\\0";
    const bool isRight =
        RemoveGateways() == -1 && settings.ReadText(L"DefaultGateway") == L"0.0.0.0" &&
        Number(L"IsRebootNeeded") == 1 && Switch(L"EnableIPToUseDhcp", cookie, true) == -1 &&
        Switch(L"EnableIPToUseDhcp", cookie, false) == 0 &&
        Number(L"LastErrorCode") == ERROR_FILE_NOT_FOUND;
    ReportValue(isRight ? 1 : 0);
}

} // namespace

TEST(DHCPConfigurationOnOldSystemsTest, RemovesStaticGateways) {
    if (!IsWine()) {
        GTEST_SKIP() << "only Wine can be told to be another Windows";
    }
    for (const char* version : {"win95", "win98", "winme"}) {
        EXPECT_EQ(1,
                  ValueOn(version, "DHCPConfigurationTest.DISABLED_RemovesTheGatewayOfAnOldSystem"))
            << version;
    }
}

} // namespace tervane::test
