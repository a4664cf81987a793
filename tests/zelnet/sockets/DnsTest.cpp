#include "ZelNet/SourceCode/sockets/ADns.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"
#include "tests/support/FakeIpHelper.h"
#include "tests/support/TestThreads.h"
#include "tests/zelnet/SocketTesting.h"

#include <sstream>

namespace ZelNet {
namespace {

// Of the namespace that tests/network/zelnet.sh makes: two scripted servers, a real one, nobody.
const char kFirst[] = "127.0.0.21";
const char kSecond[] = "127.0.0.22";
const char kReal[] = "127.0.0.53";
const char kNobody[] = "127.0.0.99";

WIN32_NetworkInfo NetworkWith(const std::vector<std::string>& servers) {
    const auto library = std::make_shared<tervane::test::FakeIpHelper>();
    library->nameServers = servers;
    return WIN32_NetworkInfo(library);
}

std::string Ask(NetworkInfo& network, const std::string& server, const std::string& name,
                std::uint32_t timeoutMs) {
    std::vector<IpAddress> results;
    std::string text = network.DNSLookup(server, name, timeoutMs, results) ? "ok" : "failed";
    for (const IpAddress& result : results) {
        text += " " + result.GetText();
    }
    return text;
}

std::string LookUp(const std::vector<std::string>& configured, const std::string& server,
                   const std::string& name, std::uint32_t timeoutMs) {
    WIN32_NetworkInfo network = NetworkWith(configured);
    return Ask(network, server, name, timeoutMs);
}

using NamespaceDnsTest = NamespaceTest;

TEST_F(NamespaceDnsTest, TakesTheFirstUsefulAnswer) {
    // tests/network/dns_server.py says what the servers make of the names.
    for (const auto& [names, outcome] :
         std::map<std::string, std::string>{{"one late hostile", "ok 10.0.0.7"},
                                            {"chain", "ok 10.0.0.1 10.0.0.2"},
                                            {"nobody alias", "ok"},
                                            {"half silent", "failed"}}) {
        std::istringstream stream(names);
        for (std::string name; stream >> name;) {
            EXPECT_EQ(LookUp({kFirst, "0.0.0.0", kSecond}, "", name + ".example",
                             outcome == "failed" ? 500 : kPatienceMs),
                      outcome)
                << name;
        }
    }
}

// The look-up that the system's parameters lead to, and nothing else, with a server that others
// wrote.
TEST_F(RealServerNamespaceTest, IsFoundThroughTheSystemsParameters) {
    const auto network = NetworkInfo::Create();
    ASSERT_EQ(network->DnsServers(), std::vector<std::string>{kReal});
    for (const auto& [name, outcome] : {std::pair("real.example", "ok 10.0.0.53"),
                                        {"alias.example", "ok 10.0.0.53"},
                                        {"any.many.example", "ok 10.0.0.99"},
                                        {"missing.example", "ok"}}) {
        EXPECT_EQ(Ask(*network, "", name, kPatienceMs), outcome) << name;
    }
}

TEST(DnsShutdown, FailsWhatIsUnderWay) {
    ASSERT_TRUE(InitializeSockets());
    std::string told;
    const auto store = [](bool success, void* text, const std::vector<DnsRecord>&) {
        *static_cast<std::string*>(text) += success ? "ok" : "failed";
    };
    const auto dns = ADns::Create();
    dns->SetDnsServers({kNobody});
    ASSERT_TRUE(dns->ResolveName("name.example", store, &told));
    EXPECT_TRUE(UninitializeSockets());
    EXPECT_FALSE(dns->ResolveName("name.example", store, &told));
    EXPECT_EQ(told, "failed");
}

TEST_F(NamespaceDnsTest, NetworkInfoChoosesWhomToAsk) {
    const std::vector<std::string> all = {kNobody, kSecond, kFirst};
    EXPECT_EQ(LookUp(all, "", "one.example", kPatienceMs), "ok 10.0.0.7");
    EXPECT_EQ(LookUp(all, kSecond, "one.example", kPatienceMs), "ok 10.0.0.7");
    EXPECT_EQ(LookUp(all, kFirst, "one.example", 300), "failed");
    const DWORD start = GetTickCount();
    EXPECT_EQ(LookUp(all, "", "silent.example", 300), "failed");
    EXPECT_GE(GetTickCount() - start, 290u);
    EXPECT_LT(GetTickCount() - start, 3000u);
    EXPECT_EQ(LookUp(all, "", "a..b", kPatienceMs), "failed");
    // The system's resolver: without servers, and without a time-out. It tries its servers in turn.
    EXPECT_EQ(LookUp({}, "", "local.example", kPatienceMs), "ok 127.0.0.1");
    EXPECT_EQ(LookUp({kNobody}, "", "local.example", 0), "ok 127.0.0.1");
    // The servers of this computer.
    const auto network = NetworkInfo::Create();
    EXPECT_EQ(network->DnsServers(), (std::vector<std::string>{kFirst, kSecond}));
    EXPECT_EQ(Ask(*network, "", "chain.example", kPatienceMs), "ok 10.0.0.1 10.0.0.2");
}

TEST_F(NamespaceDnsTest, ManyLookUpsAtOnce) {
    constexpr int kLookUps = 300;
    std::atomic<int> found = 0;
    const auto round = [&found](int lookUps) {
        tervane::test::OnThreads(lookUps, [&found](int index) {
            const std::string name = "host" + std::to_string(index) + ".many.example";
            found += LookUp({kReal, kNobody}, "", name, 60000) == "ok 10.0.0.99" ? 1 : 0;
        });
    };
    round(20);
    EXPECT_EQ(Settled(ThreadCount, idle_), idle_);
    ExpectNoHandleLost([&] {
        found = 0;
        round(kLookUps);
        EXPECT_EQ(found, kLookUps);
        EXPECT_EQ(Settled(ThreadCount, idle_), idle_);
    });
}

using NamespaceConnectTest = NamespaceTest;

TEST_F(NamespaceConnectTest, ResolvesHostNamesItself) {
    const UniqueSocket listening(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in any{};
    int length = sizeof any;
    any.sin_family = AF_INET;
    ASSERT_EQ(bind(listening.Get(), reinterpret_cast<sockaddr*>(&any), sizeof any), 0);
    ASSERT_EQ(listen(listening.Get(), SOMAXCONN), 0);
    ASSERT_EQ(getsockname(listening.Get(), reinterpret_cast<sockaddr*>(&any), &length), 0);
    std::set<std::string> peers;
    const auto connect = [&](const char* name, const char* word) {
        RecordingListener listener;
        const auto socket = TcpNonBlockingClientSocket::Create();
        EXPECT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
        EXPECT_TRUE(socket->Connect(name, ntohs(any.sin_port)));
        EXPECT_EQ(listener.Await(word).find(word), 0u) << name;
        IpAddress peer;
        std::uint16_t peerPort = 0;
        if (socket->GetPeer(peer, peerPort)) {
            peers.insert(peer.GetText());
        }
    };
    for (int attempt = 0; attempt < 20; ++attempt) {
        connect("two.example", "connect:0");
    }
    // One of two, chosen at random.
    EXPECT_EQ(peers, (std::set<std::string>{"127.0.0.1", "127.0.0.2"}));
    connect("nobody.example", "close:1");
    connect("alias.example", "close:1");
}

TEST_F(NamespaceConnectTest, CanBeClosedAndReleasedWhileResolving) {
    RecordingListener listener;
    auto socket = TcpNonBlockingClientSocket::Create();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    ASSERT_TRUE(socket->Connect("silent.example", 1));
    EXPECT_FALSE(socket->Connect("127.0.0.1", 1));
    EXPECT_TRUE(socket->Close(false));
    EXPECT_EQ(listener.Await("close:0"), "close:0");
    for (DWORD round = 0; round < 50; ++round) {
        ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
        const auto closing = ZelBase::ModulePin::StartThread([&socket, round] {
            Sleep(round % 4);
            socket->Close(false);
        });
        socket->Connect("silent.example", 1); // a look-up may just be beginning
        WaitForSingleObject(closing.Get(), kPatienceMs);
        listener.Await("close:0", 2 + static_cast<int>(round));
    }
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
        ASSERT_TRUE(socket->Connect(round % 2 == 0 ? "silent.example" : "local.example", 1));
        Sleep(static_cast<DWORD>(round)); // the answer may come at any time
        socket = TcpNonBlockingClientSocket::Create();
    }
    EXPECT_EQ(Settled(ThreadCount, idle_), idle_);
}

TEST(NetworkInfo, AsksTheSystemWhenThereIsNoServer) {
    SocketLayerScope layer;
    LogReader log;
    for (const auto& servers : {std::vector<std::string>(), {"0.0.0.0"}}) {
        const std::string told = LookUp(servers, "", "localhost", 1234 + servers.size());
        EXPECT_TRUE(told.starts_with("ok 127.0.0.1")) << told; // some systems tell it twice
    }
    log.Expect("WIN32_NetworkInfo",
               {"DNSLookup|3|Server = , TimeOut = 1234ms",
                "DNSLookup|3|Server = , TimeOut = 1235ms", "DNSLookup|1|Failed to find servers.",
                "DNSLookup|3|System Call is being performed.", "DNSLookup|3|Found 127.0.0.1"});
}

TEST(NetworkInfo, ReadsTheNetworkParameters) {
    WIN32_NetworkInfo network = NetworkWith({"10.0.0.1", "", "10.0.0.2"});
    EXPECT_EQ(network.DnsServers(), (std::vector<std::string>{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(network.HostName(), "workstation");
    EXPECT_EQ(network.DomainName(), "example");
    // This computer's.
    const auto real = NetworkInfo::Create();
    char name[256] = "";
    SocketLayerScope layer;
    ASSERT_EQ(gethostname(name, sizeof name), 0);
    EXPECT_EQ(_stricmp(real->HostName().c_str(), name), 0) << real->HostName() << ", " << name;
}

} // namespace
} // namespace ZelNet
