// How the lives of sockets begin and end, whoever ends them and wherever: alike for TCP sockets,
// line sockets and UDP sockets.

#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "tests/support/ScriptedServer.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

struct Tcp {
    using Socket = std::shared_ptr<TcpNonBlockingClientSocket>;
    static constexpr bool kConnects = true;
    static constexpr int kLines = 0;
    static constexpr const char* kCallbacks[] = {"connect", "send", "receive", "close"};
    static bool Open(const Socket& socket, RecordingListener& listener, std::uint16_t) {
        return socket->Create(&listener, 0, IpAddress(), false);
    }
    template <typename AnySocket>
    static void Begin(const AnySocket& socket, std::uint16_t port) {
        EXPECT_TRUE(socket->Connect("127.0.0.1", port));
    }
    static void Read(const Socket& socket) {
        char buffer[100];
        socket->Receive(buffer, sizeof buffer);
    }
};

struct Line : Tcp {
    using Socket = std::unique_ptr<ATcpNonBlockingLineSocket>;
    static constexpr int kLines = 3;
    static constexpr const char* kCallbacks[] = {"connect", "send", "line", "receive", "close"};
    static bool Open(const Socket& socket, RecordingListener& listener, std::uint16_t) {
        return socket->Create(&listener, 0, IpAddress(), false) != nullptr;
    }
    static void Read(const Socket&) {}
};

// Sends to itself.
struct Udp {
    using Socket = std::shared_ptr<UdpNonBlockingClientSocket>;
    static constexpr bool kConnects = false;
    static constexpr int kLines = 0;
    static constexpr const char* kCallbacks[] = {"send", "receive"};
    static bool Open(const Socket& socket, RecordingListener& listener, std::uint16_t port) {
        return socket->Create(&listener, port, LoopbackAddress());
    }
    static void Begin(const Socket& socket, std::uint16_t port) {
        socket->SendTo("127.0.0.1", port, "self", 4);
    }
    static void Read(const Socket&) {}
};

template <typename Kind>
class SocketLife : public SocketLayerTest {
protected:
    // What may happen in a callback.
    void Act(const std::string& how, std::uint16_t port) {
        if (how == "throw") {
            hasThrown = true;
            throw std::bad_alloc();
        }
        if (how.starts_with("close")) {
            socket->Close(how == "close now");
        }
        if (how.starts_with("open again")) {
            EXPECT_FALSE(Kind::Open(socket, *second, 0)); // is open
            socket->Close(true);
            EXPECT_TRUE(Kind::Open(socket, *second, 0));
            Kind::Begin(socket, port);
        }
        if (how.ends_with("release")) {
            socket.reset();
        }
    }
    void Play(const std::string& callback, const std::string& how) {
        const bool again = how.starts_with("open again");
        ScriptedServer server(std::vector(Kind::kConnects * (again ? 2u : 1u),
                                          Script{"S:one\r\ntwo\r\nthree\r\n", "END"}));
        RecordingListener first;
        first.On(callback, [&](void*) {
            while (!hasBegun) { // datagrams can be sent before they are
                Sleep(1);
            }
            Act(how, server.Port());
        });
        second = std::make_unique<RecordingListener>();
        // Without that no end is told. Others may let the socket go while the second is told.
        const auto read = [&](void*) { Kind::Read(socket); };
        first.On("receive", read);
        if (how == "open again") {
            second->On("receive", read);
        }
        hasBegun = hasThrown = false;
        socket = Kind::Socket::element_type::Create();
        ASSERT_TRUE(Kind::Open(socket, first, server.Port()));
        Kind::Begin(socket, server.Port());
        hasBegun = true;
        // A listener that fails must hear the end, unless it was that.
        const bool throws = how == "throw";
        const bool told = throws ? callback != "close" : how != "release" || callback == "close";
        const std::string end = throws ? "close:3" : "close:0";
        first.Await(told ? end : throws ? "" : callback + ":0");
        for (int waited = 0; throws && !hasThrown && waited < kPatienceMs; ++waited) {
            Sleep(1);
        }
        if (!throws) {
            first.Await(callback + ":0"); // that it has acted
        }
        EXPECT_EQ(first.Count("close"), told) << first.Words();
        EXPECT_EQ(first.Count(end), told) << first.Words();
        EXPECT_LE(first.Count("line"), callback == "connect" ? 0 : callback == "line" ? 1 : 3);
        if (how == "open again") { // nothing that the first life was taking reaches the second
            second->Await(Kind::kConnects ? "close:0" : "send:0");
            EXPECT_EQ(second->Count("line"), Kind::kLines);
        }
        socket.reset();
    }

    std::unique_ptr<RecordingListener> second;
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasThrown = false;
    typename Kind::Socket socket;
};

using Kinds = testing::Types<Tcp, Line, Udp>;
TYPED_TEST_SUITE(SocketLife, Kinds);

TYPED_TEST(SocketLife, EndsOnceInEveryCallback) {
    for (const char* callback : TypeParam::kCallbacks) {
        for (const char* how : {"close now", "close later", "release", "throw", "open again",
                                "open again, release"}) {
            SCOPED_TRACE(std::string(callback) + ", " + how);
            this->Play(callback, how);
        }
    }
    EXPECT_LE(Settled(ThreadCount, this->idle_), this->idle_);
}

using TcpLife = SocketLayerTest;

std::shared_ptr<TcpNonBlockingClientSocket> OpenSocket(RecordingListener& listener) {
    auto socket = TcpNonBlockingClientSocket::Create();
    EXPECT_TRUE(socket && socket->Create(&listener, 0, IpAddress(), false));
    return socket;
}

// A callback of the first life goes on while the second one is closed, and must not hold that up.
// The second one's end is told once, the third life is not hurt by what is left of the others.
TEST_F(TcpLife, LivesEndIndependently) {
    ScriptedServer server({Script{}, Script{}, Script{}});
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

TEST_F(TcpLife, ReleaseWaitsForACallbackOnTheEventThread) {
    ScriptedServer server({Script{}});
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

TEST_F(TcpLife, FiveSocketsShareAThread) {
    RecordingListener listener;
    std::vector<std::shared_ptr<TcpNonBlockingClientSocket>> sockets;
    for (const std::size_t threads : {1, 1, 1, 1, 1, 2}) {
        sockets.push_back(OpenSocket(listener));
        EXPECT_EQ(ThreadCount(), idle_ + threads);
    }
    sockets.pop_back();
    EXPECT_EQ(Settled(ThreadCount, idle_ + 1), idle_ + 1);
    sockets[2]->Close(false);
    listener.Await("close:0");
    EXPECT_TRUE(sockets[2]->Create(&listener, 0, IpAddress(), false)); // the freed slot
    EXPECT_EQ(ThreadCount(), idle_ + 1);
    sockets.clear();
    EXPECT_EQ(Settled(ThreadCount, idle_), idle_);
}

// Whoever holds the log's mutex makes the event thread wait with the slot locked.
TEST_F(TcpLife, LosesNoCloseToABusySlot) {
    const ZelBase::UniqueHandle log(
        OpenMutexA(SYNCHRONIZE, FALSE, "Global\\ZelKit::WIN32_Logger::Mutex2"));
    ASSERT_TRUE(log);
    RecordingListener listener;
    const auto udp = UdpNonBlockingClientSocket::Create();
    const std::uint16_t port = UnusedPort();
    ASSERT_TRUE(udp->Create(&listener, port, LoopbackAddress()));
    listener.Await("send:0");
    Sleep(50); // for the thread to settle
    ASSERT_EQ(WaitForSingleObject(log.Get(), kPatienceMs), WAIT_OBJECT_0);
    EXPECT_EQ(udp->SendTo("127.0.0.1", port, "self", 4), 4u);
    Sleep(50); // for the thread to look into it
    EXPECT_TRUE(udp->Close(false));
    ReleaseMutex(log.Get());
    listener.Await("close:0");
    EXPECT_EQ(listener.Count("close:0"), 1) << listener.Words();
}

TEST(SocketLayer, CountsItsUsers) {
    const std::size_t idle = IdleThreadCount();
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
    EXPECT_LE(ThreadCount(), idle);
    const std::size_t handles = OpenHandleCount();
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(InitializeSockets());
        EXPECT_TRUE(early->Create(&listener, 0, IpAddress(), false));
        EXPECT_TRUE(early->Close(false));
        EXPECT_TRUE(UninitializeSockets());
        EXPECT_LE(ThreadCount(), idle);
    }
    EXPECT_LE(OpenHandleCount(), handles);
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
    constexpr int kSockets = 12;
    tervane::test::OnThreads(8, [port](int thread) {
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
    });
}

TEST(SocketLayer, SurvivesManySocketsAtOnce) {
    const std::size_t idle = IdleThreadCount();
    // Connections are made by the system; nobody needs to accept them.
    SocketLayerScope layer;
    const UniqueSocket listening(socket(AF_INET, SOCK_STREAM, 0));
    const std::uint16_t port = BindToLoopback(listening.Get());
    ASSERT_EQ(listen(listening.Get(), SOMAXCONN), 0);
    ExpectNoHandleLost([port, idle] {
        OpenAndReleaseOnManyThreads(port);
        EXPECT_LE(Settled(ThreadCount, idle), idle);
    });
}

} // namespace
} // namespace ZelNet
