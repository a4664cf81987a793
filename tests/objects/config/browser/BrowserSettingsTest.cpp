// The browser's settings in the real registry and in one that refuses, and the two texts in which
// Windows keeps the proxy: the servers, and the hosts reached without one.

#include "objects/config/browser/BrowserSettings.h"
#include "objects/config/browser/ConnectionWizard.h"
#include "objects/config/browser/ProxyServers.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace tervane {
namespace {

using test::RefuseValue;
using test::ScratchHive;

const std::wstring kInternet = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
const std::wstring kWizard = L"\\Software\\Microsoft\\Internet Connection Wizard";

class BrowserSettingsTest : public testing::Test {
protected:
    RegistryKey Internet() { return user_.Create(kInternet); }
    RegistryKey Connections() { return user_.Create(kInternet + L"\\Connections"); }
    std::optional<std::wstring> Text(const wchar_t* name) { return Internet().ReadText(name); }
    std::optional<DWORD> Number(const wchar_t* name) { return Internet().ReadNumber(name); }

    ScratchHive user_{RegistryHive::kCurrentUser};
    BrowserSettings settings_;
};

TEST_F(BrowserSettingsTest, AreEmptyWhereNothingIsStoredAndMadeByWriting) {
    EXPECT_EQ(L"", settings_.HomePage());
    EXPECT_EQ(L"", settings_.AutoConfigurationScript());
    EXPECT_EQ(L"", settings_.ProxyExceptions());
    EXPECT_EQ(L"", settings_.ProxyServerText());
    EXPECT_TRUE(settings_.SetLocalBypass(false));
    EXPECT_TRUE(settings_.SetAutoConfigurationScript(L""));
    EXPECT_TRUE(settings_.SetProxyExceptions(L""));
    EXPECT_TRUE(Internet().ValueNames().empty());

    EXPECT_TRUE(settings_.SetHomePage(L"http://home.example/"));
    EXPECT_EQ(L"http://home.example/", settings_.HomePage());
    EXPECT_EQ(L"http://home.example/",
              user_.Open(L"Software\\Microsoft\\Internet Explorer\\Main").ReadText(L"Start Page"));
    EXPECT_TRUE(settings_.SetAutoConfigurationScript(L"http://proxy/proxy.pac"));
    EXPECT_EQ(L"http://proxy/proxy.pac", Text(L"AutoConfigURL"));
    EXPECT_TRUE(settings_.SetAutoConfigurationScript(L""));
    EXPECT_EQ(std::nullopt, Text(L"AutoConfigURL"));
    EXPECT_FALSE(settings_.SetHomePage(std::wstring_view(L"a\0b", 3)));
    EXPECT_EQ(L"http://home.example/", settings_.HomePage());
}

TEST_F(BrowserSettingsTest, ReadWhatTheSetupTold) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    EXPECT_EQ(L"", settings_.ProgramPath());
    EXPECT_EQ(L"", settings_.Version());
    machine.Create(L"SOFTWARE\\Microsoft\\IE4\\SETUP").WriteText(L"Path", L"C:\\Old");
    EXPECT_EQ(L"C:\\Old", settings_.ProgramPath());
    machine.Create(L"SOFTWARE\\Microsoft\\IE Setup\\Setup")
        .WriteExpandableText(L"Path", L"%SystemRoot%\\Internet Explorer");
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    EXPECT_EQ(windows + std::wstring(L"\\Internet Explorer"), settings_.ProgramPath());
    machine.Create(L"SOFTWARE\\Microsoft\\Internet Explorer").WriteText(L"Version", L"6.0.2600");
    EXPECT_EQ(L"6.0.2600", settings_.Version());
}

TEST_F(BrowserSettingsTest, SwitchAutomaticDetectionInTheFlagsByteOnly) {
    using enum BrowserSettings::Detection;
    EXPECT_EQ(kNoSettings, settings_.SetAutomaticDetection(true));
    EXPECT_FALSE(user_.Open(kInternet + L"\\Connections").IsOpen());
    const RegistryKey key = Connections();
    EXPECT_EQ(kNoSettings, settings_.SetAutomaticDetection(true));
    EXPECT_TRUE(key.ValueNames().empty());

    std::vector<unsigned char> block(56, 0x5A);
    block[0] = 0x3C;
    key.WriteBytes(L"DefaultConnectionSettings", block);
    for (const bool enable : {true, false}) {
        EXPECT_EQ(kSwitched, settings_.SetAutomaticDetection(enable));
        block[8] = enable ? 9 : 1;
        EXPECT_EQ(block, key.Read(L"DefaultConnectionSettings")->bytes);
    }
    for (std::size_t size : {0, 1, 8}) {
        block.resize(size);
        key.WriteBytes(L"DefaultConnectionSettings", block);
        EXPECT_EQ(kNoSettings, settings_.SetAutomaticDetection(true)) << size;
        EXPECT_EQ(block, key.Read(L"DefaultConnectionSettings")->bytes);
    }
    key.WriteText(L"DefaultConnectionSettings", L"longer than nine bytes");
    EXPECT_EQ(kNoSettings, settings_.SetAutomaticDetection(true));
    EXPECT_EQ(L"longer than nine bytes", key.ReadText(L"DefaultConnectionSettings"));
}

TEST_F(BrowserSettingsTest, StayWholeWhenTheRegistryRefuses) {
    Internet().WriteText(L"ProxyServer", L"old:80");
    for (const std::optional<DWORD> enabled : {std::optional<DWORD>(), std::optional<DWORD>(1)}) {
        if (enabled) {
            Internet().WriteNumber(L"ProxyEnable", *enabled);
        }
        for (const wchar_t* refused : {L"ProxyServer", L"ProxyEnable"}) {
            const BrowserSettings settings(RefuseValue(refused));
            EXPECT_FALSE(settings.SetProxyServerText(L"new:80"));
            EXPECT_FALSE(settings.SetProxyServerText(L""));
            EXPECT_EQ(L"old:80", Text(L"ProxyServer")) << refused;
            EXPECT_EQ(enabled, Number(L"ProxyEnable")) << refused;
        }
    }
    Connections().WriteBytes(L"DefaultConnectionSettings", std::vector<unsigned char>(9));
    EXPECT_EQ(
        BrowserSettings::Detection::kRefused,
        BrowserSettings(RefuseValue(L"DefaultConnectionSettings")).SetAutomaticDetection(true));
    Internet().WriteText(L"ProxyOverride", L"a");
    EXPECT_FALSE(BrowserSettings(RefuseValue(L"ProxyOverride")).SetLocalBypass(true));
    EXPECT_FALSE(BrowserSettings(RefuseValue(L"ProxyOverride")).SetProxyExceptions(L""));
    EXPECT_EQ(L"a", Text(L"ProxyOverride"));
    EXPECT_FALSE(BrowserSettings(RefuseValue(L"Start Page")).SetHomePage(L"x"));
    EXPECT_FALSE(BrowserSettings(test::RefuseKey(L"Internet Settings")).SetProxyServerText(L"x"));
}

TEST(ConnectionWizardTest, IsCompletedForTheUsersOfEachFamily) {
    const ScratchHive users(RegistryHive::kUsers);
    const auto completed = [&](const std::wstring& user) {
        return users.Open(user + kWizard).ReadNumber(L"Completed") == 1u;
    };
    const std::wstring kUser = L"S-1-5-21-1-2-3-4711";
    for (const std::wstring& name : {kUser, kUser + L"_Classes", std::wstring(L"Customer")}) {
        ASSERT_TRUE(users.Create(name).IsOpen());
    }
    EXPECT_TRUE(CompleteConnectionWizard(PlatformFamily::kXp));
    EXPECT_TRUE(completed(kUser));
    EXPECT_TRUE(completed(L".Default"));
    EXPECT_FALSE(users.Open(kUser + L"_Classes\\Software").IsOpen());
    EXPECT_FALSE(users.Open(L"Customer\\Software").IsOpen());
    EXPECT_EQ(REG_DWORD, users.Open(kUser + kWizard).TypeOf(L"Completed"));

    EXPECT_TRUE(CompleteConnectionWizard(PlatformFamily::kWindows98));
    EXPECT_TRUE(completed(L"Customer"));
    // One that is refused does not keep the others from being marked.
    test::DeleteTree(RegistryHive::kUsers, kUser + L"\\Software");
    EXPECT_FALSE(
        CompleteConnectionWizard(PlatformFamily::kNt4, test::RefuseKey(L".Default" + kWizard)));
    EXPECT_TRUE(completed(kUser));
}

using enum ProxyProtocol;

struct StoredText {
    const wchar_t* stored;
    const wchar_t* addresses[kProxyProtocols];
    const wchar_t* committed; // without any change
};

const StoredText kTextsFromTheField[] = {
    {L"", {L"", L"", L"", L"", L""}, L""},
    {L" ; ;", {L"", L"", L"", L"", L""}, L""},
    // What is meant for all protocols is never meant for socks.
    {L"proxy:8080",
     {L"proxy:8080", L"proxy:8080", L"proxy:8080", L"proxy:8080", L""},
     L"proxy:8080"},
    {L"  proxy ; ", {L"proxy", L"proxy", L"proxy", L"proxy", L""}, L"proxy"},
    {L"proxy;socks=e",
     {L"proxy", L"proxy", L"proxy", L"proxy", L"e"},
     L"http=proxy;https=proxy;ftp=proxy;gopher=proxy;socks=e"},
    {L"http=a:80;https=b:443;ftp=c;gopher=d;socks=e:1080",
     {L"a:80", L"b:443", L"c", L"d", L"e:1080"},
     L"http=a:80;https=b:443;ftp=c;gopher=d;socks=e:1080"},
    {L"socks=e:1080;http=a:80;", {L"a:80", L"", L"", L"", L"e:1080"}, L"http=a:80;socks=e:1080"},
    {L"HTTP = a:80 ;  Ftp=\tc:21 https=b",
     {L"a:80", L"b", L"c:21", L"", L""},
     L"http=a:80;https=b;ftp=c:21"},
    {L"http=http://a:80;rtsp=r:554;=x;ftp=",
     {L"http://a:80", L"", L"", L"", L""},
     L"http=http://a:80;rtsp=r:554;=x"},
    {L"ftp=c;proxy",
     {L"proxy", L"proxy", L"c", L"proxy", L""},
     L"http=proxy;https=proxy;ftp=c;gopher=proxy"},
    {L"http=first;http=second", {L"first", L"", L"", L"", L""}, L"http=first;http=second"},
    {L"one;two", {L"one", L"one", L"one", L"one", L""}, L"one;two"},
    {L"==;;=", {L"", L"", L"", L"", L""}, L"=="},
};

TEST(ProxyServersTest, ReadsTextsFromTheFieldAndLosesNothingOfThem) {
    for (const StoredText& row : kTextsFromTheField) {
        const ProxyServers servers = ProxyServers::Parse(row.stored);
        for (std::size_t i = 0; i < kProxyProtocols; ++i) {
            EXPECT_EQ(row.addresses[i], servers.Address(static_cast<ProxyProtocol>(i)))
                << row.stored << " " << i;
        }
        EXPECT_EQ(row.committed, servers.Text());
        EXPECT_EQ(row.committed, ProxyServers::Parse(servers.Text()).Text());
    }
}

TEST(ProxyServersTest, ChangesOneProtocolAndLeavesTheOthers) {
    ProxyServers servers = ProxyServers::Parse(L"rtsp=r;http=first;http=second;ftp=c");
    servers.SetAddress(kHttp, L"new:8080");
    servers.SetAddress(kFtp, L"");
    EXPECT_EQ(L"http=new:8080;rtsp=r", servers.Text());

    servers = ProxyServers::Parse(L"proxy:80");
    servers.SetAddress(kSocks, L"other");
    EXPECT_EQ(L"http=proxy:80;https=proxy:80;ftp=proxy:80;gopher=proxy:80;socks=other",
              servers.Text());
    servers.SetAddress(kSocks, L"");
    EXPECT_EQ(L"proxy:80", servers.Text());
    for (std::size_t i = 0; i < kProxyProtocols; ++i) {
        servers.SetAddress(static_cast<ProxyProtocol>(i), L"");
    }
    EXPECT_EQ(L"", servers.Text());
}

TEST(ProxyServersTest, TellsAddressesFromTextsThatWouldAddEntries) {
    for (const wchar_t* address : {L"a", L"proxy.example.org:8080", L"[::1]:80", L"http://a:80"}) {
        EXPECT_TRUE(IsProxyAddress(address)) << address;
    }
    for (const wchar_t* text : {L"", L"a;b", L"http=a", L"a b", L"a\tb", L"a\r\nb", L"a\x7F"}) {
        EXPECT_FALSE(IsProxyAddress(text)) << text;
    }
    EXPECT_FALSE(IsProxyAddress(std::wstring_view(L"a\0b", 3)));
    EXPECT_EQ(L"a b", TrimBlanks(L" \ta b\r\n"));
    EXPECT_EQ(L"", TrimBlanks(L"  "));
}

TEST(ProxyServersTest, ReadsLongTextsInOneGo) {
    std::wstring text;
    for (int i = 0; i < 100'000; ++i) {
        text += L"p" + std::to_wstring(i) + L" = a ; ";
    }
    EXPECT_EQ(100'000, std::ranges::count(ProxyServers::Parse(text).Text(), L'='));
}

TEST(LocalBypassTest, KeepsOneMarkerAtTheEnd) {
    const struct {
        const wchar_t *list, *with, *without, *replaced; // by "new"
    } rows[] = {{L"", L"<local>", L"", L"new"},
                {L"a;b", L"a;b;<local>", L"a;b", L"new"},
                {L"<local>", L"<local>", L"", L"new;<local>"},
                {L"a;<LOCAL>", L"a;<LOCAL>", L"a", L"new;<local>"},
                {L"a;<local>;behind", L"a;<local>;behind", L"a", L"new;<local>"},
                {L"a;<loca", L"a;<loca;<local>", L"a;<loca", L"new"}};
    for (const auto& [list, with, without, replaced] : rows) {
        EXPECT_EQ(with, WithLocalBypass(list));
        EXPECT_EQ(without, WithoutLocalBypass(list));
        EXPECT_EQ(replaced, WithExceptions(list, L"new"));
    }
    EXPECT_EQ(L"<local>", WithExceptions(L"old;<local>", L""));
    EXPECT_EQ(L"a;<local>", WithExceptions(L"a;<local>", L"a;<local>"));
}

} // namespace
} // namespace tervane
