#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "ZelNet/SourceCode/sockets/WIN32_TcpNonBlockingClientSocket.h"
#include "tests/support/ScriptedServer.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

using TcpSocketTest = SocketLayerTest;
using UdpSocketTest = SocketLayerTest;
using LineSocketTest = SocketLayerTest;
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
    LogReader log;
    ScriptedServer server({Script{"C:hello", "S:world"}});
    RecordingListener listener;
    const auto socket = OpenSocket(listener);
    int context = 0;
    socket->SetContext(&context);
    void* seen = nullptr;
    listener.On("connect", [&](void* given) {
        seen = given;
        EXPECT_TRUE(socket->IsConnected());
        EXPECT_EQ(socket->Send("hello\r\n", 7), 7u);
    });
    EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(), false)); // is open
    EXPECT_TRUE(socket->Connect(LoopbackAddress(), server.Port()));
    EXPECT_FALSE(socket->Connect(LoopbackAddress(), server.Port())); // is under way
    listener.Await("receive:0");
    char buffer[10];
    EXPECT_EQ(socket->Peek(buffer, 3), 3u);
    EXPECT_EQ(ReceiveAll(*socket), "world");
    EXPECT_EQ(seen, &context);
    log.Collect();
    IpAddress peer;
    std::uint16_t port = 0;
    EXPECT_TRUE(socket->GetPeer(peer, port));
    EXPECT_EQ(peer, LoopbackAddress());
    EXPECT_EQ(port, server.Port());
    EXPECT_TRUE(socket->Close(false));
    listener.Await("close:0");
    EXPECT_FALSE(socket->IsConnected());
    EXPECT_EQ(server.Problems(), "");
    EXPECT_EQ(listener.Count("connect:0"), 1);
    EXPECT_EQ(listener.Count("close:0"), 1);
    // Viewers, and people, know the objects of this library by the texts that they log.
    log.Expect("WIN32_SETManager",
               {"ReleaseThread|3|Marking thread for self-destruct.  ZelBase::Thread: "});
    log.Expect("WIN32_SocketEventThread",
               {"AddSocket|3|Adding socket #0 from listener: ",
                "RemoveSocket|3|removing socket #0 from listener: ",
                "Run|3|Waiting for socket events with 1 sockets", "Run|3|Network events: "});
    log.Expect("WIN32_TcpNonBlockingClientSocket",
               {"Create|3|Socket creation succeeded.  handle: ", "Create|0|Socket already created.",
                "FinishConnect|3|Connect returned would block.",
                "OnConnect|3|Calling OnConnect with errorcode 0",
                "Receive|0|recv() failed with error code: 10035.",
                "Close|3|Calling Shutdown() on socket ",
                "OnClose|3|Calling closesocket() on socket "});
}

TEST_F(TcpSocketTest, TellsHowConnectionsEnd) {
    // Winsock says close:9 for a reset; Wine 8 does not tell it from an orderly end.
    for (const auto& [script, end, expected] :
         {std::tuple(Script{"S:last words", "END"}, "close:0", "last words"),
          {{"RESET"}, "close:", ""},
          {{"CLOSE"}, "close:0", ""}}) {
        ScriptedServer server({Script(script)});
        RecordingListener listener;
        const auto socket = OpenSocket(listener);
        std::string data;
        listener.On("receive", [&](void*) { data += ReceiveAll(*socket); });
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        const std::string words = listener.Await(end);
        EXPECT_TRUE(words.starts_with("connect:0 ")) << words;
        EXPECT_EQ(words.find("close:"), words.size() - 7) << words;
        EXPECT_EQ(data, expected);
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
    ScriptedServer server({Script{"S:plain", "C:nothing"}});
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
    EXPECT_EQ(server.Problems(), "expected \"nothing\", got the end; ");
}

// The event thread is kept busy elsewhere, so that the connect event cannot be seen yet.
TEST_F(TcpSocketTest, DataBeforeTheConnectEventIsReportedAfterIt) {
    ScriptedServer server({Script{}, Script{}});
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

TEST_F(UdpSocketTest, SendsAndReceivesDatagrams) {
    const UniqueSocket peer(socket(AF_INET, SOCK_DGRAM, 0));
    const std::uint16_t port = BindToLoopback(peer.Get());
    RecordingListener listener;
    const auto udp = UdpNonBlockingClientSocket::Create();
    ASSERT_TRUE(udp->Create(&listener, 0, LoopbackAddress()));
    EXPECT_FALSE(udp->Create(&listener, 0, LoopbackAddress()));
    listener.Await("send:0"); // datagrams can be sent at once
    EXPECT_EQ(udp->SendTo("localhost", port, "ping", 4), 0u);
    EXPECT_EQ(udp->SendTo("127.0.0.1", port, "ping", 4), 4u);
    char buffer[10];
    sockaddr_in from{};
    int length = sizeof from;
    ASSERT_EQ(
        recvfrom(peer.Get(), buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &length),
        4);
    for (const std::string datagram : {"pong", "much longer than the room for it", "again"}) {
        sendto(peer.Get(), datagram.data(), static_cast<int>(datagram.size()), 0,
               reinterpret_cast<sockaddr*>(&from), length);
    }
    listener.Await("receive:0");
    IpAddress sender;
    std::uint16_t senderPort = 0;
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 4u);
    EXPECT_EQ(sender, LoopbackAddress());
    EXPECT_EQ(senderPort, port);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 0u); // does not fit
    listener.Await("receive:0", 2);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 5u);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 0u); // none left
    EXPECT_TRUE(udp->Close(false));
    listener.Await("close:0");
    EXPECT_EQ(listener.Count("close"), 1);
    EXPECT_TRUE(udp->Create(&listener, 0, IpAddress()));
}

using LineSocketPtr = std::unique_ptr<ATcpNonBlockingLineSocket>;

LineSocketPtr OpenLineSocket(TcpNonBlockingLineSocketListener& listener) {
    auto socket = ATcpNonBlockingLineSocket::Create();
    EXPECT_TRUE(socket);
    EXPECT_EQ(socket->Create(&listener, 0, IpAddress(), false), socket.get());
    return socket;
}

TEST_F(LineSocketTest, AnnouncesEachLineOnce) {
    const struct {
        std::vector<std::string> pieces;
        std::string lines;
        int lineEnds;
    } cases[] = {
        {{"one\r\ntwo\r\nthree\r\n"}, "[one][two][three]", 3},
        {{"a", "b", "\r", "\n", "\n", "c", "\n", "\r"}, "[ab][][c]", 3},
        {{"begin", "ning\r", "\nend"}, "[beginning]", 1},
        {{"a\rb\nc\n\rd\r\r\n\n"}, "[a\rb][c][d\r][]", 4},
        {{std::string(100000, 'x') + "\r\n"}, "[" + std::string(100000, 'x') + "]", 1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.lines.substr(0, 50));
        Script script;
        std::size_t sent = 0;
        for (const std::string& piece : row.pieces) {
            script.push_back("S:" + piece);
            script.push_back("WAIT:20");
            sent += piece.size();
        }
        script.push_back("END");
        ScriptedServer server({Script(script)});
        RecordingListener listener;
        const auto socket = OpenLineSocket(listener);
        std::string lines;
        listener.On("line", [&](void* context) {
            EXPECT_EQ(context, socket.get());
            std::string line;
            const std::uint32_t length = socket->ReceiveLine(line);
            EXPECT_EQ(length, line.size());
            lines += "[" + line + "]";
        });
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        const std::string words = listener.Await("close:0");
        EXPECT_TRUE(lines == row.lines) << lines.substr(0, 50);
        EXPECT_EQ(listener.Count("line:0"), row.lineEnds);
        if (&row == cases) {
            EXPECT_NE(words.find("line:0 line:0 line:0 receive:0"), std::string::npos) << words;
        }
        std::string line;
        EXPECT_EQ(socket->ReceiveLine(line), ATcpNonBlockingLineSocket::kNoLine);
        EXPECT_EQ(socket->BytesReceived(), sent);
    }
}

TEST_F(LineSocketTest, PeekIsAllOrNothingButReceiveIsNot) {
    ScriptedServer server({Script{"S:12345"}});
    RecordingListener listener;
    const auto socket = OpenLineSocket(listener);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("receive:0");
    char buffer[10] = "-";
    EXPECT_EQ(socket->Peek(buffer, sizeof buffer), 5u);
    EXPECT_STREQ(buffer, "-"); // counted, not copied
    EXPECT_EQ(socket->Peek(nullptr, 3), 3u);
    EXPECT_EQ(socket->Peek(nullptr, 9), 5u);
    EXPECT_EQ(socket->Peek(buffer, 0), 0u);
    EXPECT_EQ(socket->Peek(buffer, 3), 3u);
    EXPECT_EQ(std::string(buffer, 3), "123");
    EXPECT_EQ(socket->Available(), 5u);
    EXPECT_EQ(socket->Receive(nullptr, 3), 0u);
    EXPECT_EQ(socket->Receive(buffer, 0), 0u);
    EXPECT_EQ(socket->Receive(buffer, 2), 2u);
    EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 3u);
    EXPECT_EQ(std::string(buffer, 3), "345");
    EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 0u);
}

// A socket of this process, found by the port that it is bound to.
SOCKET FindSocket(std::uint16_t port) {
    for (SOCKET handle = 4; handle < 0x10000; handle += 4) {
        sockaddr_in address{};
        int length = sizeof address;
        if (getsockname(handle, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
            address.sin_port == htons(port)) {
            return handle;
        }
    }
    return INVALID_SOCKET;
}

// The server does not read at first, so that the system's buffers fill up.
TEST_F(LineSocketTest, SendsWhatTheSystemDoesNotTakeAtOnce) {
    std::string data;
    for (int index = 0; data.size() < 200000; ++index) {
        data += "line " + std::to_string(index) + "\r\n";
    }
    const int small = 4096;
    const auto* option = reinterpret_cast<const char*>(&small);
    const UniqueSocket listening(socket(AF_INET, SOCK_STREAM, 0));
    const std::uint16_t port = BindToLoopback(listening.Get());
    setsockopt(listening.Get(), SOL_SOCKET, SO_RCVBUF, option, sizeof small);
    ASSERT_EQ(listen(listening.Get(), 1), 0);
    RecordingListener listener;
    const auto socket = ATcpNonBlockingLineSocket::Create();
    const std::uint16_t clientPort = UnusedPort();
    ASSERT_TRUE(socket->Create(&listener, clientPort, IpAddress(), false));
    listener.On("connect", [&](void*) {
        setsockopt(FindSocket(clientPort), SOL_SOCKET, SO_SNDBUF, option, sizeof small);
        EXPECT_EQ(socket->Send(nullptr, 5), 0u);
        EXPECT_EQ(socket->Send("", 0), 0u);
        EXPECT_EQ(socket->Send(data.data(), static_cast<std::uint32_t>(data.size())), data.size());
        EXPECT_GT(socket->Unsent(), 0u);
        EXPECT_EQ(listener.Count("send"), 0);
    });
    ASSERT_TRUE(socket->Connect("127.0.0.1", port));
    listener.Await("connect:0");
    const UniqueSocket peer(accept(listening.Get(), nullptr, nullptr));
    std::string received;
    char buffer[4096];
    while (received.size() < data.size()) {
        const int count = recv(peer.Get(), buffer, sizeof buffer, 0);
        ASSERT_GT(count, 0);
        received.append(buffer, static_cast<std::size_t>(count));
    }
    EXPECT_TRUE(received == data);
    for (int waited = 0; socket->Unsent() != 0 && waited < kPatienceMs; ++waited) {
        Sleep(1); // for the thread that has sent the last of it
    }
    EXPECT_EQ(socket->Unsent(), 0u);
}

// Neither what was received nor what was not sent gets into the next life.
TEST_F(LineSocketTest, StartsAfreshWhenOpenedAgain) {
    const Script script = {"C:new", "S:left over", "END"};
    ScriptedServer server({script, script});
    RecordingListener listener;
    const auto socket = OpenLineSocket(listener);
    listener.On("connect", [&](void*) { socket->Send("new\r\n", 5); });
    socket->SetLineMode(false);
    for (const int life : {1, 2}) {
        EXPECT_EQ(socket->Available(), 0u);
        EXPECT_EQ(socket->Unsent(), 0u);
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        listener.Await("close:0", 2 * life - 1);
        EXPECT_EQ(socket->Available(), 9u);
        EXPECT_EQ(socket->BytesReceived(), 9u * life);
        ASSERT_EQ(socket->Create(&listener, 0, IpAddress(), false), socket.get());
        EXPECT_EQ(socket->Send("old", 3), 3u); // not connected
        EXPECT_EQ(socket->Unsent(), 3u);
        EXPECT_TRUE(socket->Close(false));
        listener.Await("close:0", 2 * life);
        ASSERT_EQ(socket->Create(&listener, 0, IpAddress(), false), socket.get());
    }
    EXPECT_EQ(server.Problems(), "");
}

// Closing does not wait for a receive loop, and none is left behind.
TEST_F(LineSocketTest, CanBeClosedWhileDataFloodsIn) {
    ScriptedServer server({Script{"S:" + std::string(2'000'000, '\n')}});
    RecordingListener listener;
    auto socket = OpenLineSocket(listener);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("line:0", 50);
    EXPECT_TRUE(socket->Close(false));
    listener.Await("close:0");
    EXPECT_EQ(listener.Words().substr(listener.Words().size() - 7), "close:0");
    EXPECT_EQ(listener.Count("close"), 1);
}

} // namespace
} // namespace ZelNet
