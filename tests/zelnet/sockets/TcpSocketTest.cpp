#include "ZelNet/SourceCode/sockets/WIN32_TcpNonBlockingClientSocket.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using TcpSocketTest = SocketLayerTest;
using SocketPtr = std::shared_ptr<TcpNonBlockingClientSocket>;

SocketPtr OpenSocket(TcpNonBlockingSocketListener& listener) {
    auto socket = TcpNonBlockingClientSocket::Create();
    EXPECT_TRUE(socket);
    EXPECT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    return socket;
}

std::string ReceiveAll(TcpNonBlockingClientSocket& socket) {
    char buffer[100];
    std::string data;
    while (const std::uint32_t size = socket.Receive(buffer, sizeof buffer)) {
        data.append(buffer, size);
    }
    return data;
}

TEST(GenericError, FollowsTheTable) {
    const std::pair<int, int> cases[] = {
        {0, 0},     {10093, 2}, {10024, 3}, {10038, 3}, {10047, 3}, {10050, 3},  {10052, 3},
        {10055, 3}, {10048, 4}, {10022, 5}, {10036, 5}, {10058, 5}, {10039, 6},  {10041, 6},
        {10043, 6}, {10049, 8}, {10051, 8}, {10053, 9}, {10054, 9}, {10035, 10}, {10040, 11},
        {10060, 1}, {10061, 1}, {10065, 1}, {13, 1},    {-1, 1},    {11001, 1},
    };
    for (const auto& [winsock, generic] : cases) {
        EXPECT_EQ(GenericErrorOf(winsock), generic) << winsock;
    }
}

TEST_F(TcpSocketTest, ConnectsSendsAndReceives) {
    std::string received;
    TcpServer server([&](Connection& connection) {
        received = connection.Receive(5);
        connection.Send("world");
        connection.AwaitEnd();
    });
    RecordingListener listener;
    const auto socket = OpenSocket(listener);
    int context = 0;
    socket->SetContext(&context);
    void* seen = nullptr;
    listener.On("connect", [&](void* given) {
        seen = given;
        EXPECT_TRUE(socket->IsConnected());
        EXPECT_EQ(socket->Send("hello", 5), 5u);
    });
    EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(), false)); // is open
    EXPECT_TRUE(socket->Connect(LoopbackAddress(), server.Port()));
    EXPECT_FALSE(socket->Connect(LoopbackAddress(), server.Port())); // is under way
    listener.Await("receive:0");
    char buffer[10];
    EXPECT_EQ(socket->Peek(buffer, 3), 3u);
    EXPECT_EQ(ReceiveAll(*socket), "world");
    EXPECT_EQ(seen, &context);
    IpAddress peer;
    std::uint16_t port = 0;
    EXPECT_TRUE(socket->GetPeer(peer, port));
    EXPECT_EQ(peer, LoopbackAddress());
    EXPECT_EQ(port, server.Port());
    EXPECT_TRUE(socket->Close(false));
    listener.Await("close:0");
    EXPECT_FALSE(socket->IsConnected());
    EXPECT_EQ(received, "hello");
    EXPECT_EQ(listener.Count("connect:0"), 1);
    EXPECT_EQ(listener.Count("close:0"), 1);
}

TEST_F(TcpSocketTest, TellsHowConnectionsEnd) {
    const struct {
        const char* what;
        TcpServer::Script script;
        const char* lastWord;
        const char* data;
    } cases[] = {
        {"half-closed after data",
         [](Connection& connection) {
             connection.Send("last words");
             connection.HalfClose();
             connection.AwaitEnd();
         },
         "close:0", "last words"},
        // Winsock says close:9; Wine 8 does not tell a reset from an orderly end.
        {"reset", [](Connection& connection) { connection.Reset(); }, "close", ""},
        {"closed at once", [](Connection&) {}, "close:0", ""},
    };
    for (const auto& row : cases) {
        TcpServer server(row.script);
        RecordingListener listener;
        const auto socket = OpenSocket(listener);
        std::string data;
        listener.On("receive", [&](void*) { data += ReceiveAll(*socket); });
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port())) << row.what;
        const std::string words = listener.Await(row.lastWord);
        EXPECT_EQ(words.substr(0, 9), "connect:0") << row.what << ": " << words;
        EXPECT_EQ(words.find("close"), words.size() - 7) << row.what << ": " << words;
        EXPECT_EQ(words.substr(words.size() - 7).find(row.lastWord), 0u) << row.what;
        EXPECT_EQ(data, row.data) << row.what;
    }
    RecordingListener listener;
    const auto socket = std::make_shared<WIN32_TcpNonBlockingClientSocket>();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    socket->OnClose(WSAECONNRESET);
    EXPECT_EQ(listener.Words(), "close:9");
}

TEST_F(TcpSocketTest, RefusalIsAConnectWithTheCatchAllError) {
    RecordingListener listener;
    const auto socket = OpenSocket(listener);
    EXPECT_TRUE(socket->Connect("127.0.0.1", UnusedPort()));
    EXPECT_EQ(listener.Await("connect:1"), "connect:1");
    EXPECT_FALSE(socket->IsConnected());
    socket->Close(false);
    EXPECT_EQ(listener.Await("close:0"), "connect:1 close:0");
}

TEST_F(TcpSocketTest, RefusesBadRequests) {
    RecordingListener listener;
    const auto socket = TcpNonBlockingClientSocket::Create();
    EXPECT_FALSE(socket->Connect("127.0.0.1", 1));
    EXPECT_EQ(socket->Send("x", 1), 0u);
    EXPECT_FALSE(socket->Close(false));
    EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("nonsense"), false));
    EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("255.255.255.255"), false));
    EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("192.0.2.1"), false)); // not ours
    EXPECT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
    EXPECT_FALSE(socket->Connect("", 1));
    EXPECT_FALSE(socket->Connect(IpAddress("nonsense"), 1));
    EXPECT_FALSE(socket->Connect(IpAddress("255.255.255.255"), 1));
    EXPECT_EQ(listener.Words(), "");
}

TEST_F(TcpSocketTest, SecureSocketsCarryNoPlainData) {
    TcpServer server([](Connection& connection) {
        connection.Send("plain");
        EXPECT_EQ(connection.Receive(1), "");
    });
    RecordingListener listener;
    const auto socket = TcpNonBlockingClientSocket::Create();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), true));
    socket->Connect("127.0.0.1", server.Port());
    listener.Await("receive:0");
    char buffer[10];
    EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 0u);
    EXPECT_EQ(socket->Peek(buffer, sizeof buffer), 0u);
    EXPECT_EQ(socket->Send("x", 1), 0u);
    socket->Close(false);
    listener.Await("close:0");
}

// The event thread is kept busy elsewhere, so that the connect event cannot be seen yet.
TEST_F(TcpSocketTest, DataBeforeTheConnectEventIsReportedAfterIt) {
    TcpServer server([](Connection& connection) { connection.AwaitEnd(); }, 2);
    RecordingListener busyListener;
    const ZelBase::UniqueHandle release(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const ZelBase::UniqueHandle isBusy(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    busyListener.On("connect", [&](void*) {
        SetEvent(isBusy.Get());
        WaitForSingleObject(release.Get(), kPatienceMs);
    });
    auto busy = OpenSocket(busyListener);
    RecordingListener listener;
    auto socket = std::make_shared<WIN32_TcpNonBlockingClientSocket>();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    busy->Connect("127.0.0.1", server.Port());
    WaitForSingleObject(isBusy.Get(), kPatienceMs);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    socket->OnReceive(0); // as the event thread would
    EXPECT_EQ(listener.Words(), "");
    SetEvent(release.Get());
    EXPECT_EQ(listener.Await("receive:0").substr(0, 19), "connect:0 receive:0");
    busy->Close(false);
    socket->Close(false);
    listener.Await("close:0");
    busyListener.Await("close:0");
}

TEST_F(TcpSocketTest, CanBeClosedAndReleasedInEveryCallback) {
    for (const std::string callback : {"connect", "send", "receive", "close"}) {
        for (const std::string how : {"close now", "close later", "release"}) {
            TcpServer server([](Connection& connection) {
                connection.Send("data");
                connection.HalfClose();
                connection.AwaitEnd();
            });
            RecordingListener listener;
            auto socket = OpenSocket(listener);
            listener.On(callback, [&](void*) {
                if (how == "release") {
                    socket.reset();
                } else {
                    socket->Close(how == "close now");
                }
            });
            listener.On("receive", [&](void*) { ReceiveAll(*socket); });
            socket->Connect("127.0.0.1", server.Port());
            listener.Await(how == "release" ? callback + ":0" : "close:0");
            const bool closeIsTold = how != "release" || callback == "close";
            EXPECT_EQ(listener.Count("close:0"), closeIsTold ? 1 : 0)
                << callback << ", " << how << ": " << listener.Words();
        }
    }
}

TEST_F(TcpSocketTest, CanBeOpenedAgainEvenInItsOwnClose) {
    TcpServer server([](Connection& connection) { connection.HalfClose(); }, 2);
    RecordingListener second;
    RecordingListener first;
    auto socket = OpenSocket(first);
    first.On("close", [&](void*) {
        EXPECT_FALSE(socket->Create(&second, 0, IpAddress(), false));
        EXPECT_TRUE(socket->Close(true));
        EXPECT_TRUE(socket->Create(&second, 0, IpAddress(), false));
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    });
    socket->Connect("127.0.0.1", server.Port());
    first.Await("close:0");
    EXPECT_EQ(second.Await("close:0").substr(0, 9), "connect:0");
    EXPECT_EQ(first.Count("close:0"), 1);
}

// In each callback the socket starts its next life, on another event thread, and is let go.
TEST_F(TcpSocketTest, CanBeOpenedAgainAndReleasedInOneCallback) {
    for (const std::string callback : {"connect", "receive", "close"}) {
        TcpServer server(
            [](Connection& connection) {
                connection.Send("data");
                connection.HalfClose();
                connection.AwaitEnd();
            },
            2);
        RecordingListener second;
        RecordingListener first;
        auto socket = OpenSocket(first);
        first.On(callback, [&](void*) {
            socket->Close(true);
            EXPECT_TRUE(socket->Create(&second, 0, IpAddress(), false));
            EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
            if (callback == "receive") {
                second.Await("connect:0"); // the next life may have begun to be told of
            }
            socket.reset();
        });
        first.On("receive", [&](void*) { ReceiveAll(*socket); });
        socket->Connect("127.0.0.1", server.Port());
        first.Await(callback + ":0");
        EXPECT_FALSE(socket);
        EXPECT_EQ(first.Count("close"), 1) << callback << ": " << first.Words();
        EXPECT_EQ(Settled(ThreadCount, ThreadCountAtStart()), ThreadCountAtStart());
        EXPECT_EQ(second.Count("close"), 0) << callback << ": " << second.Words();
    }
}

// A callback of the first life goes on while the second one is closed, and must not hold that up.
// The second one's end is told once, the third life is not hurt by what is left of the others.
TEST_F(TcpSocketTest, LivesEndIndependently) {
    TcpServer server([](Connection& connection) { connection.AwaitEnd(); }, 3);
    RecordingListener first;
    RecordingListener second;
    RecordingListener third;
    auto socket = OpenSocket(first);
    second.On("connect", [&](void*) { EXPECT_TRUE(socket->Close(false)); });
    second.On("close", [&](void*) {
        EXPECT_TRUE(socket->Close(true));
        EXPECT_TRUE(socket->Create(&third, 0, IpAddress(), false));
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    });
    first.On("connect", [&](void*) {
        socket->Close(true);
        EXPECT_TRUE(socket->Create(&second, 0, IpAddress(), false));
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        EXPECT_EQ(second.Await("close:0"), "connect:0 close:0");
    });
    socket->Connect("127.0.0.1", server.Port());
    EXPECT_EQ(first.Await("connect:0"), "close:0 connect:0");
    EXPECT_EQ(third.Await("connect:0").substr(0, 9), "connect:0");
    EXPECT_TRUE(socket->IsConnected());
    EXPECT_EQ(third.Count("close"), 0);
    EXPECT_TRUE(socket->Close(false));
    third.Await("close:0");
    EXPECT_EQ(second.Count("close"), 1);
}

TEST_F(TcpSocketTest, ReleaseWaitsForACallbackOnTheEventThread) {
    TcpServer server([](Connection& connection) { connection.AwaitEnd(); });
    RecordingListener listener;
    const ZelBase::UniqueHandle inside(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    std::atomic<bool> over = false;
    listener.On("connect", [&](void*) {
        SetEvent(inside.Get());
        Sleep(700); // longer than a post waits
        over = true;
    });
    auto socket = OpenSocket(listener);
    socket->Connect("127.0.0.1", server.Port());
    WaitForSingleObject(inside.Get(), kPatienceMs);
    EXPECT_TRUE(socket->Close(false)); // gets through although the slot is busy
    socket.reset();
    EXPECT_TRUE(over);
    EXPECT_EQ(listener.Count("close:0"), 0);
}

TEST_F(TcpSocketTest, FiveSocketsShareAThread) {
    const unsigned before = ThreadCountAtStart();
    EXPECT_EQ(Settled(ThreadCount, before), before);
    RecordingListener listener;
    std::vector<SocketPtr> sockets;
    for (int index = 0; index < 5; ++index) {
        sockets.push_back(OpenSocket(listener));
    }
    EXPECT_EQ(ThreadCount(), before + 1);
    sockets.push_back(OpenSocket(listener));
    EXPECT_EQ(ThreadCount(), before + 2);
    sockets.pop_back();
    EXPECT_EQ(Settled(ThreadCount, before + 1), before + 1);
    sockets[2]->Close(false);
    listener.Await("close:0");
    EXPECT_TRUE(sockets[2]->Create(&listener, 0, IpAddress(), false)); // the freed slot
    EXPECT_EQ(ThreadCount(), before + 1);
    sockets.clear();
    EXPECT_EQ(Settled(ThreadCount, before), before);
}

TEST(SocketLayer, CountsItsUsers) {
    EXPECT_TRUE(UninitializeSockets()); // nothing to do
    RecordingListener listener;
    const auto early = TcpNonBlockingClientSocket::Create();
    EXPECT_FALSE(early->Create(&listener, 0, IpAddress(), false));
    ASSERT_TRUE(InitializeSockets());
    ASSERT_TRUE(InitializeSockets());
    EXPECT_TRUE(UninitializeSockets());
    EXPECT_TRUE(early->Create(&listener, 0, IpAddress(), false));
    // The last user goes while a socket is open.
    EXPECT_TRUE(UninitializeSockets());
    EXPECT_EQ(listener.Words(), "close:2");
    EXPECT_FALSE(early->Close(false));
    // Nothing is left of it.
    EXPECT_EQ(ThreadCount(), ThreadCountAtStart());
    const unsigned handles = HandleCount();
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(InitializeSockets());
        EXPECT_TRUE(early->Create(&listener, 0, IpAddress(), false));
        EXPECT_TRUE(early->Close(false));
        EXPECT_TRUE(UninitializeSockets());
        EXPECT_EQ(ThreadCount(), ThreadCountAtStart());
    }
    EXPECT_LE(HandleCount(), handles);
}

TEST(SocketLayer, CanBeShutDownFromACallback) {
    ASSERT_TRUE(InitializeSockets());
    RecordingListener listener;
    listener.On("connect", [](void*) { UninitializeSockets(); });
    auto socket = OpenSocket(listener);
    socket->Connect("127.0.0.1", 1);
    listener.Await("close:2");
    EXPECT_EQ(listener.Count("close:2"), 1);
}

// Many threads open, connect and let go at every possible moment.
void OpenAndReleaseOnManyThreads(std::uint16_t port) {
    constexpr int kThreads = 8;
    constexpr int kSockets = 12;
    std::vector<ZelBase::UniqueHandle> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.push_back(ZelBase::ModulePin::StartThread([port, thread] {
            for (int index = 0; index < kSockets; ++index) {
                RecordingListener listener;
                const auto socket = OpenSocket(listener);
                EXPECT_TRUE(socket->Connect("127.0.0.1", port));
                const int way = (thread + index) % 3; // one of them: released at once
                if (way == 1) {
                    EXPECT_TRUE(socket->Close(false));
                    listener.Await("close:0");
                } else if (way == 2) {
                    listener.Await("connect:0");
                }
            }
        }));
    }
    for (const auto& thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread.Get(), 60000), WAIT_OBJECT_0);
    }
}

TEST(SocketLayer, SurvivesManySocketsAtOnce) {
    // Connections are made by the system; nobody needs to accept them.
    SocketLayerScope layer;
    const UniqueSocket listening(socket(AF_INET, SOCK_STREAM, 0));
    const std::uint16_t port = BindToLoopback(listening.Get());
    ASSERT_EQ(listen(listening.Get(), SOMAXCONN), 0);
    OpenAndReleaseOnManyThreads(port);
    EXPECT_EQ(Settled(ThreadCount, ThreadCountAtStart()), ThreadCountAtStart());
    const unsigned handles = HandleCount();
    OpenAndReleaseOnManyThreads(port);
    EXPECT_EQ(Settled(ThreadCount, ThreadCountAtStart()), ThreadCountAtStart());
    EXPECT_LE(Settled(HandleCount, handles), handles);
}

} // namespace
} // namespace ZelNet
