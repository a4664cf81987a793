// The two texts in which Windows keeps the proxy: the servers, and the hosts reached without one.

#include "objects/config/browser/ProxyServers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tervane {
namespace {

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
        for (size_t i = 0; i < kProxyProtocols; ++i) {
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
    for (size_t i = 0; i < kProxyProtocols; ++i) {
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
    EXPECT_EQ(L"<local>", WithLocalBypass(L""));
    EXPECT_EQ(L"a;b;<local>", WithLocalBypass(L"a;b"));
    EXPECT_EQ(L"a;<local>", WithLocalBypass(WithLocalBypass(L"a")));
    EXPECT_EQ(L"a;<LOCAL>", WithLocalBypass(L"a;<LOCAL>"));

    EXPECT_EQ(L"", WithoutLocalBypass(L"<local>"));
    EXPECT_EQ(L"host", WithoutLocalBypass(L"host;<local>"));
    EXPECT_EQ(L"a;b", WithoutLocalBypass(L"a;b;<Local>"));
    EXPECT_EQ(L"a", WithoutLocalBypass(L"a;<local>;behind"));
    EXPECT_EQ(L"a;<loca", WithoutLocalBypass(L"a;<loca"));
}

TEST(LocalBypassTest, StaysWhenExceptionsAreReplaced) {
    EXPECT_EQ(L"new", WithExceptions(L"", L"new"));
    EXPECT_EQ(L"new", WithExceptions(L"old", L"new"));
    EXPECT_EQ(L"", WithExceptions(L"old", L""));
    EXPECT_EQ(L"new;<local>", WithExceptions(L"old;<local>", L"new"));
    EXPECT_EQ(L"<local>", WithExceptions(L"old;<local>", L""));
    EXPECT_EQ(L"a;<local>", WithExceptions(L"a;<local>", L"a;<local>"));
}

} // namespace
} // namespace tervane
