// The connectivity tester on real sockets: loopback servers that accept, refuse and keep silent,
// real pings, and, in a network of their own, real and scripted name servers.

#include <winsock2.h>

#include "support/HandleCount.h"
#include "support/MemoryUse.h"
#include "support/SystemPing.h"
#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tervane::test {
namespace {

constexpr DISPID kLookedUp = 1;
constexpr DISPID kPortTested = 2;
constexpr DISPID kPinged = 3;
constexpr DWORD kPatience = 30000; // ms

// A TCP socket on a loopback port of the system's choice.
class LoopbackPort {
public:
    explicit LoopbackPort(bool listening) {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        socket_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int size = sizeof address;
        bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        if (listening) {
            listen(socket_, SOMAXCONN);
        }
    }
    ~LoopbackPort() {
        closesocket(socket_);
        WSACleanup();
    }
    int Number() const { return port_; }
    // Takes one connection and drops it.
    void AcceptOne() const { closesocket(accept(socket_, nullptr, nullptr)); }
    // Takes all connections that wait, and drops them.
    void AcceptAll() const {
        u_long nonBlocking = 1;
        ioctlsocket(socket_, FIONBIO, &nonBlocking);
        for (SOCKET next = 0; next != INVALID_SOCKET;) {
            next = accept(socket_, nullptr, nullptr);
            closesocket(next);
        }
    }

private:
    SOCKET socket_;
    int port_;
};

class ConnectivityTesterTest : public testing::Test {
protected:
    ConnectivityTesterTest() { cookie_ = Advise(tester_.Get(), &sink_); }
    ~ConnectivityTesterTest() override {
        if (tester_) {
            Unadvise(tester_.Get(), cookie_);
        }
    }

    // Calls, waits for the one event of that call and returns its argument, which is -1 or 0.
    int Ask(DISPID event, const wchar_t* method, std::initializer_list<Argument> arguments) {
        const size_t before = sink_.Count();
        EXPECT_EQ(S_OK, Call(tester_.Get(), method, arguments).status);
        if (!sink_.WaitFor(before + 1, kPatience)) {
            ADD_FAILURE() << "no event";
            return 4711;
        }
        EXPECT_EQ(event, sink_[before].id);
        EXPECT_EQ(VT_I2, sink_[before].arguments.at(0).Type());
        EXPECT_NE(GetCurrentThreadId(), sink_[before].thread);
        return sink_[before].arguments.at(0).Get().iVal;
    }

    const Apartment apartment_;
    ComPtr<IDispatch> tester_ = TestComponent::Get().Create(__uuidof(ConnectivityTester));
    RecordingSink sink_;
    DWORD cookie_ = 0;
};

TEST_F(ConnectivityTesterTest, TellsOpenPortsFromOthers) {
    const LoopbackPort open(true);
    const LoopbackPort closed(false);
    EXPECT_EQ(-1, Ask(kPortTested, L"TestTCPPort", {L"127.0.0.1", open.Number(), 5000}));
    EXPECT_EQ(-1, Ask(kPortTested, L"TestTCPPort", {L"127.0.0.1", open.Number(), 0}));

    // A refusal is told only when the time has run out.
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"127.0.0.1", closed.Number(), 700}));
    EXPECT_GE(GetTickCount64() - start, 690u);
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"", open.Number(), 100}));
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"no such host.invalid", open.Number(), 100}));
}

TEST_F(ConnectivityTesterTest, GivesItsOwnTimeWhenNoneIsAsked) {
    const LoopbackPort closed(false);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"127.0.0.1", closed.Number(), -1}));
    EXPECT_GE(GetTickCount64() - start, 3990u);
    EXPECT_LT(GetTickCount64() - start, 9000u);
}

TEST_F(ConnectivityTesterTest, PingsThisMachine) {
    if (!SystemCanPing()) {
        GTEST_SKIP() << "the system does not let programs ping";
    }
    EXPECT_EQ(-1, Ask(kPinged, L"Ping", {L"127.0.0.1", 0, 3}));
    EXPECT_EQ(-1, Ask(kPinged, L"Ping", {L"127.0.0.1", 2000, 1}));
    EXPECT_EQ(0, Ask(kPinged, L"Ping", {L"127.0.0.1", 2000, 0}));
    EXPECT_EQ(0, Ask(kPinged, L"Ping", {L"127.0.0.1", 2000, -7}));
    EXPECT_EQ(0, Ask(kPinged, L"Ping", {L"", 2000, 1}));
    EXPECT_EQ(0, Ask(kPinged, L"Ping", {L"no such host.invalid", 200, 1}));
}

TEST_F(ConnectivityTesterTest, FindsNoAddressForNoName) {
    EXPECT_EQ(0, Ask(kLookedUp, L"DNSLookup", {L"", 1000}));
    EXPECT_EQ(0, Ask(kLookedUp, L"DNSLookup", {L"", 0}));
    EXPECT_EQ(0, Ask(kLookedUp, L"DNSLookup", {std::wstring(70000, L'x'), 300}));
    EXPECT_EQ(-1, Ask(kLookedUp, L"DNSLookup", {L"localhost", 0}));
}

TEST_F(ConnectivityTesterTest, AnswersAfterItsLastReferenceIsDropped) {
    const LoopbackPort open(true);
    Call(tester_.Get(), L"TestTCPPort", {L"127.0.0.1", open.Number(), 5000});
    tester_.Reset();
    EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
    ASSERT_TRUE(sink_.WaitFor(1, kPatience));
    EXPECT_EQ(-1, sink_[0].arguments.at(0).Get().iVal);
    EXPECT_TRUE(PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    EXPECT_EQ(0, sink_.References());
}

// Many tests at once, of every outcome: each has its event, and nothing stays behind.
TEST_F(ConnectivityTesterTest, ManyAtOnceEachAnswerOnce) {
    constexpr int kRounds = 60;
    const LoopbackPort open(true);
    const LoopbackPort closed(false);
    const auto ask = [&](int rounds) {
        const size_t before = sink_.Count();
        for (int i = 0; i < rounds; ++i) {
            Call(tester_.Get(), L"TestTCPPort", {L"127.0.0.1", open.Number(), 20000});
            Call(tester_.Get(), L"TestTCPPort", {L"127.0.0.1", closed.Number(), 200});
            Call(tester_.Get(), L"DNSLookup", {L"", 100});
            open.AcceptOne();
        }
        EXPECT_TRUE(sink_.WaitFor(before + 3 * rounds, kPatience));
        PumpUntil([] { return false; }, 300); // no further event, and the workers end
        EXPECT_EQ(before + 3 * rounds, sink_.Count());
    };
    ask(kRounds);
    const size_t handles = OpenHandleCount();
    const size_t first = sink_.Count();
    ask(kRounds);
    int openPorts = 0;
    for (size_t i = first; i < sink_.Count(); ++i) {
        openPorts += sink_[i].arguments.at(0).Get().iVal == -1;
    }
    EXPECT_EQ(kRounds, openPorts);
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
    const struct {
        const wchar_t* name;
        int success;
    } cases[] = {
        {L"one.example", -1},     {L"late.example", -1},   {L"chain.example", -1},
        {L"hostile.example", -1}, {L"counts.example", -1}, {L"nobody.example", 0},
        {L"loop.example", 0},     {L"silent.example", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.success, Ask(kLookedUp, L"DNSLookup", {row.name, 1500})) << row.name;
    }
    EXPECT_EQ(-1, Ask(kLookedUp, L"DNSLookup", {L"one.example", 0}));
    EXPECT_EQ(-1, Ask(kLookedUp, L"DNSLookup", {L"one.example", -5}));
}

TEST_F(NamespaceConnectivityTest, LooksHostsUpForPortsAndPings) {
    const LoopbackPort open(true);
    EXPECT_EQ(-1, Ask(kPortTested, L"TestTCPPort", {L"local.example", open.Number(), 5000}));
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"silent.example", open.Number(), 500}));
    // An address that is known, but not there: neither accepted nor refused.
    const ULONGLONG connecting = GetTickCount64();
    EXPECT_EQ(0, Ask(kPortTested, L"TestTCPPort", {L"10.55.0.9", open.Number(), 700}));
    EXPECT_GE(GetTickCount64() - connecting, 690u);
    EXPECT_LT(GetTickCount64() - connecting, 5000u);
    EXPECT_EQ(-1, Ask(kPinged, L"Ping", {L"local.example", 2000, 1}));
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, Ask(kPinged, L"Ping", {L"10.55.0.9", 400, 3})); // known, but not there
    EXPECT_GE(GetTickCount64() - start, 1150u);
}

// 200 look-ups and 200 port tests at once, each by an object of its own that is released right
// after the call. What each of them finds is counted by its event.
class Wave {
public:
    explicit Wave(int open, int closed) {
        for (int i = 0; i < kTests; ++i) {
            const bool good = i % 2 == 0;
            const wchar_t* name = good ? L"one.example" : L"nobody.example";
            Start(L"DNSLookup", {name, 60000});
            Start(L"TestTCPPort", {L"127.0.0.1", good ? open : closed, good ? 60000 : 300});
        }
    }
    // Waits for the last event; true when each has come once, with the answer that is due.
    bool Ends() {
        if (!sink_.WaitFor(2 * kTests, 4 * kPatience)) {
            return false;
        }
        PumpUntil([this] { return sink_.References() == 0; }, kPatience);
        int found[2] = {};
        for (size_t i = 0; i < sink_.Count(); ++i) {
            found[sink_[i].id == kLookedUp] += sink_[i].arguments.at(0).Get().iVal == -1;
        }
        return sink_.Count() == 2 * kTests && found[0] == kTests / 2 && found[1] == kTests / 2 &&
               sink_.References() == 0;
    }

private:
    static constexpr int kTests = 200;

    void Start(const wchar_t* method, std::initializer_list<Argument> arguments) {
        const auto tester = TestComponent::Get().Create(__uuidof(ConnectivityTester));
        Advise(tester.Get(), &sink_);
        EXPECT_EQ(S_OK, Call(tester.Get(), method, arguments).status);
    }

    RecordingSink sink_;
};

// A thousand of each in all: in waves, because a thousand threads at once leave a 32-bit process no
// room.
TEST_F(NamespaceConnectivityTest, ThousandsOfTestsLeaveNothingBehind) {
    constexpr int kWaves = 5;
    const LoopbackPort open(true);
    const LoopbackPort closed(false);
    ASSERT_TRUE(Wave(open.Number(), closed.Number()).Ends());
    open.AcceptAll();
    const size_t handles = OpenHandleCount();
    const MemoryUse memory = MemoryInUse();
    for (int wave = 1; wave < kWaves; ++wave) {
        ASSERT_TRUE(Wave(open.Number(), closed.Number()).Ends());
        open.AcceptAll();
    }
    constexpr size_t kMegabyte = 1 << 20;
    PumpUntil([&] { return OpenHandleCount() <= handles; }, kPatience);
    EXPECT_LE(OpenHandleCount(), handles);
    EXPECT_LT(MemoryInUse().resident, memory.resident + 8 * kMegabyte);
    EXPECT_LT(MemoryInUse().committed, memory.committed + 8 * kMegabyte);
}

// With dnsmasq as the only name server of the system.
TEST_F(NamespaceConnectivityTest, AsksTheRealServerOfTheSystem) {
    if (!std::getenv("TERVANE_REAL_SERVER")) {
        GTEST_SKIP() << "run by tests/network/connectivity.sh, in a network of its own";
    }
    const LoopbackPort open(true);
    EXPECT_EQ(-1, Ask(kLookedUp, L"DNSLookup", {L"real.example", 5000}));
    EXPECT_EQ(-1, Ask(kLookedUp, L"DNSLookup", {L"alias.example", 5000}));
    EXPECT_EQ(0, Ask(kLookedUp, L"DNSLookup", {L"missing.example", 5000}));
    EXPECT_EQ(-1, Ask(kPortTested, L"TestTCPPort", {L"here.example", open.Number(), 5000}));
}

} // namespace
} // namespace tervane::test
