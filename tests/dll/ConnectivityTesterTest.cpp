// The connectivity tester on real sockets: loopback servers that accept, refuse and keep silent,
// real pings, and, in a network of their own, real and scripted name servers.

#include "support/LoopbackServer.h"
#include "support/ObjectTest.h"
#include "support/ProcessUsage.h"
#include "support/SystemPing.h"

#include <cstdlib>
#include <map>

namespace tervane::test {
namespace {

constexpr int kClosed = 1; // nobody listens there

// A port that accepts.
int OpenPort() {
    static const LoopbackServer server;
    return server.Port(LoopbackServer::kSmtp);
}

class ConnectivityTesterTest : public ObjectTest {
protected:
    ConnectivityTesterTest() : ObjectTest(L"ConnectivityTester") {}

    // Calls; what the event of that call tells.
    std::wstring Told(const wchar_t* method, const std::vector<Argument>& arguments) {
        EXPECT_EQ(L"empty", Ask(method, arguments));
        return Event();
    }
    // So many tests of an open port, of a closed one, and of no name at once, each by an object of
    // its own that is released right after the call.
    static void Flood(int rounds) {
        RecordingSink sink;
        const auto start = [&](const wchar_t* method, const std::vector<Argument>& arguments) {
            const auto tester = New(L"ConnectivityTester");
            Advise(tester.Get(), &sink);
            EXPECT_EQ(S_OK, Call(tester.Get(), method, arguments).status);
        };
        for (int i = 0; i < rounds; ++i) {
            start(L"TestTCPPort", {L"127.0.0.1", OpenPort(), 60000});
            start(L"TestTCPPort", {L"127.0.0.1", kClosed, 300});
            start(L"DNSLookup", {L"", 60000});
        }
        const auto tests = static_cast<std::size_t>(3 * rounds);
        EXPECT_TRUE(sink.WaitFor(tests, 4 * kPatience));
        EXPECT_TRUE(PumpUntil([&] { return sink.References() == 0; }, kPatience));
        PumpUntil([] { return false; }, 300); // no further event, and the workers end
        EXPECT_EQ(tests, sink.Count());
        std::map<std::wstring, int> events;
        for (std::size_t i = 0; i < sink.Count(); ++i) {
            ++events[sink.Text(i)];
        }
        EXPECT_EQ((std::map<std::wstring, int>{
                      {L"2(-1s)", rounds}, {L"2(0s)", rounds}, {L"1(0s)", rounds}}),
                  events);
    }
};

TEST_F(ConnectivityTesterTest, TellsOpenPortsFromOthers) {
    EXPECT_EQ(L"2(-1s)", Told(L"TestTCPPort", {L"127.0.0.1", OpenPort(), 5000}));
    EXPECT_EQ(L"2(-1s)", Told(L"TestTCPPort", {L"127.0.0.1", OpenPort(), 0}));
    EXPECT_EQ(L"2(0s)", Told(L"TestTCPPort", {L"", OpenPort(), 100}));
    EXPECT_EQ(L"2(0s)", Told(L"TestTCPPort", {L"no such host.invalid", OpenPort(), 100}));
    // A refusal is told only when the time has run out: that asked for, or its own of 4 seconds.
    for (const int timeout : {700, -1}) {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(L"2(0s)", Told(L"TestTCPPort", {L"127.0.0.1", kClosed, timeout}));
        EXPECT_GE(GetTickCount64() - start, timeout < 0 ? 3990u : 690u);
        EXPECT_LT(GetTickCount64() - start, timeout < 0 ? 9000u : 3900u);
    }
}

TEST_F(ConnectivityTesterTest, PingsThisMachine) {
    if (!SystemCanPing()) {
        GTEST_SKIP() << "the system does not let programs ping";
    }
    EXPECT_EQ(L"3(-1s)", Told(L"Ping", {L"127.0.0.1", 0, 3}));
    EXPECT_EQ(L"3(-1s)", Told(L"Ping", {L"127.0.0.1", 2000, 1}));
    EXPECT_EQ(L"3(0s)", Told(L"Ping", {L"127.0.0.1", 2000, 0}));
    EXPECT_EQ(L"3(0s)", Told(L"Ping", {L"127.0.0.1", 2000, -7}));
    EXPECT_EQ(L"3(0s)", Told(L"Ping", {L"no such host.invalid", 200, 1}));
}

TEST_F(ConnectivityTesterTest, FindsNoAddressForNoName) {
    EXPECT_EQ(L"1(0s)", Told(L"DNSLookup", {L"", 0}));
    EXPECT_EQ(L"1(0s)", Told(L"DNSLookup", {std::wstring(70000, L'x'), 300}));
    EXPECT_EQ(L"1(-1s)", Told(L"DNSLookup", {L"localhost", 0}));
}

// Many tests at once, of every outcome: each has its event, and nothing stays behind.
TEST_F(ConnectivityTesterTest, ManyAtOnceEachAnswerOnce) {
    Flood(60);
    const std::size_t handles = OpenHandleCount();
    Flood(60);
    EXPECT_LE(OpenHandleCount(), handles + 5);
}

class NamespaceConnectivityTest : public ConnectivityTesterTest {
protected:
    void SetUp() override {
        if (!std::getenv("TERVANE_NAMESPACE")) {
            GTEST_SKIP() << "run by tests/network/connectivity.sh, in a network of its own";
        }
    }
};

// What the two name servers make of each name stands in tests/network/dns_server.py.
TEST_F(NamespaceConnectivityTest, AsksAllNameServersOfTheSystem) {
    for (const wchar_t* name : {L"one.example", L"late.example", L"hostile.example"}) {
        EXPECT_EQ(L"1(-1s)", Told(L"DNSLookup", {name, 1500})) << name;
    }
    for (const wchar_t* name : {L"nobody.example", L"silent.example"}) {
        EXPECT_EQ(L"1(0s)", Told(L"DNSLookup", {name, 1500})) << name;
    }
    EXPECT_EQ(L"1(-1s)", Told(L"DNSLookup", {L"one.example", 0}));
    EXPECT_EQ(L"1(-1s)", Told(L"DNSLookup", {L"one.example", -5}));
}

TEST_F(NamespaceConnectivityTest, LooksHostsUpForPortsAndPings) {
    EXPECT_EQ(L"2(-1s)", Told(L"TestTCPPort", {L"local.example", OpenPort(), 5000}));
    EXPECT_EQ(L"2(0s)", Told(L"TestTCPPort", {L"silent.example", OpenPort(), 500}));
    // An address that is known, but not there: neither accepted nor refused.
    const ULONGLONG connecting = GetTickCount64();
    EXPECT_EQ(L"2(0s)", Told(L"TestTCPPort", {L"10.55.0.9", OpenPort(), 700}));
    EXPECT_GE(GetTickCount64() - connecting, 690u);
    EXPECT_LT(GetTickCount64() - connecting, 5000u);
    EXPECT_EQ(L"3(-1s)", Told(L"Ping", {L"local.example", 2000, 1}));
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(L"3(0s)", Told(L"Ping", {L"10.55.0.9", 400, 3})); // known, but not there
    EXPECT_GE(GetTickCount64() - start, 1150u);
    const ULONGLONG unasked = GetTickCount64();
    EXPECT_EQ(L"3(0s)", Told(L"Ping", {L"10.55.0.9", 0, 1})); // its own time, 10 seconds
    EXPECT_GE(GetTickCount64() - unasked, 9900u);
}

} // namespace
} // namespace tervane::test
