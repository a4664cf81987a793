#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/LineReading.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using LineSocketTest = SocketLayerTest;
using LineSocketPtr = std::unique_ptr<ATcpNonBlockingLineSocket>;

LineSocketPtr OpenLineSocket(TcpNonBlockingLineSocketListener& listener) {
    auto socket = ATcpNonBlockingLineSocket::Create();
    EXPECT_TRUE(socket);
    EXPECT_EQ(socket->Create(&listener, 0, IpAddress(), false), socket.get());
    return socket;
}

TEST(LineReading, EndsLinesAtTheLineFeed) {
    const struct {
        const char* data;
        const char* lines; // each in brackets, then what stays in the buffer
    } cases[] = {
        {"abc\r\n", "[abc]"},
        {"abc\n\r", "[abc]"},
        {"abc\n", "[abc]"},
        {"\n", "[]"},
        {"\r\n\r\n", "[][]"},
        {"abc", "abc"},
        {"a\r\nb\nc\n\rd", "[a][b][c]d"},
        {"a\rb\n", "[a\rb]"},
        {"a\r\r\n", "[a\r]"},
        {"a\n\r\nb", "[a][]b"},
    };
    for (const auto& row : cases) {
        ZelBase::ADynaByteBuffer buffer(16, 4);
        ASSERT_TRUE(buffer.Append(row.data, ZelBase::ADynaByteBuffer::kUntilNul));
        std::string result;
        std::string line;
        while (TakeLine(buffer, line)) {
            result += "[" + line + "]";
        }
        std::string rest(buffer.Size(), ' ');
        buffer.Read(rest.data(), rest.size(), false);
        EXPECT_EQ(result + rest, row.lines) << row.data;
    }
}

TEST_F(LineSocketTest, AnnouncesEachLineOnce) {
    const struct {
        const char* what;
        std::vector<std::string> pieces;
        const char* lines;
        int lineEnds;
    } cases[] = {
        {"three lines in one packet", {"one\r\ntwo\r\nthree\r\n"}, "[one][two][three]", 3},
        {"one byte at a time", {"a", "b", "\r", "\n", "\n", "c", "\n", "\r"}, "[ab][][c]", 3},
        {"a line across pieces", {"begin", "ning\r", "\nend"}, "[beginning]", 1},
        {"a long line", {std::string(100000, 'x') + "\r\n"}, "long", 1},
    };
    for (const auto& row : cases) {
        TcpServer server([&](Connection& connection) {
            for (const std::string& piece : row.pieces) {
                connection.Send(piece);
                Sleep(row.pieces.size() > 1 ? 20 : 0);
            }
            connection.HalfClose();
            connection.AwaitEnd();
        });
        RecordingListener listener;
        const auto socket = OpenLineSocket(listener);
        std::string lines;
        listener.On("line", [&](void* context) {
            EXPECT_EQ(context, socket.get());
            std::string line;
            const std::uint32_t length = socket->ReceiveLine(line);
            EXPECT_EQ(length, line.size()) << row.what;
            lines += line.size() > 1000 ? "long" : "[" + line + "]";
            EXPECT_EQ(line.size() > 1000 ? line.size() : 100000, 100000u) << row.what;
        });
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        const std::string words = listener.Await("close:0");
        EXPECT_EQ(lines, row.lines) << row.what;
        EXPECT_EQ(listener.Count("line:0"), row.lineEnds) << row.what;
        if (row.pieces.size() == 1 && row.lineEnds == 3) {
            EXPECT_NE(words.find("line:0 line:0 line:0 receive:0"), std::string::npos) << words;
        }
        std::string line;
        EXPECT_EQ(socket->ReceiveLine(line), ATcpNonBlockingLineSocket::kNoLine) << row.what;
        std::size_t sent = 0;
        for (const std::string& piece : row.pieces) {
            sent += piece.size();
        }
        EXPECT_EQ(socket->BytesReceived(), sent) << row.what;
    }
}

TEST_F(LineSocketTest, PeekIsAllOrNothingButReceiveIsNot) {
    TcpServer server([](Connection& connection) {
        connection.Send("12345");
        connection.AwaitEnd();
    });
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
    std::string received;
    const ZelBase::UniqueHandle queued(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    TcpServer server(
        [&](Connection& connection) {
            WaitForSingleObject(queued.Get(), kPatienceMs);
            received = connection.Receive(data.size());
            connection.Send("thanks\r\n");
            connection.AwaitEnd();
        },
        1, 4096);
    RecordingListener listener;
    const auto socket = ATcpNonBlockingLineSocket::Create();
    const std::uint16_t clientPort = UnusedPort();
    ASSERT_TRUE(socket->Create(&listener, clientPort, IpAddress(), false));
    std::uint32_t unsent = 0;
    listener.On("connect", [&](void*) {
        const int small = 4096;
        setsockopt(FindSocket(clientPort), SOL_SOCKET, SO_SNDBUF,
                   reinterpret_cast<const char*>(&small), sizeof small);
        EXPECT_EQ(socket->Send(nullptr, 5), 0u);
        EXPECT_EQ(socket->Send("", 0), 0u);
        EXPECT_EQ(socket->Send(data.data(), static_cast<std::uint32_t>(data.size())), data.size());
        unsent = socket->Unsent();
        EXPECT_EQ(listener.Count("send"), 0);
        SetEvent(queued.Get());
    });
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("line:0");
    EXPECT_GT(unsent, 0u);
    EXPECT_EQ(socket->Unsent(), 0u);
    EXPECT_TRUE(received == data);
}

TEST_F(LineSocketTest, EndsDeliveriesWhenClosedOrDestroyedInACallback) {
    for (const std::string callback : {"connect", "send", "line", "receive", "close"}) {
        for (const std::string how : {"now", "later", "destroy"}) {
            TcpServer server([](Connection& connection) {
                connection.Send("one\r\ntwo\r\nthree\r\n");
                connection.HalfClose();
                connection.AwaitEnd();
            });
            RecordingListener listener;
            auto socket = OpenLineSocket(listener);
            listener.On(callback, [&](void*) {
                if (how == "destroy") {
                    socket.reset();
                } else {
                    socket->Close(how == "now");
                }
            });
            ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
            listener.Await(callback + ":0");
            const bool told = how != "destroy" || callback == "close";
            if (told) {
                listener.Await("close:0");
            }
            // Both the data and the room to send are there when the connection is made.
            const bool received = listener.Count("line") != 0 || callback != "send";
            const int lines = callback == "connect" || !received ? 0 : callback == "line" ? 1 : 3;
            EXPECT_EQ(listener.Count("line"), lines)
                << callback << ", " << how << ": " << listener.Words();
            EXPECT_LE(listener.Count("send"), callback == "connect" ? 0 : 1) << listener.Words();
            EXPECT_EQ(listener.Count("close"), told ? 1 : 0)
                << callback << ", " << how << ": " << listener.Words();
        }
    }
}

// What is left of the piece that the first life was taking does not reach the second.
TEST_F(LineSocketTest, CanBeOpenedAgainBetweenTwoLines) {
    int connections = 0;
    TcpServer server(
        [&](Connection& connection) {
            connection.Send(connections++ == 0 ? "one\r\ntwo\r\nthree\r\n" : "four\r\n");
            connection.AwaitEnd();
        },
        2);
    RecordingListener second;
    RecordingListener first;
    const auto socket = OpenLineSocket(first);
    EXPECT_EQ(socket->Create(&second, 0, IpAddress(), false), nullptr); // is open
    std::string lines;
    const auto readLine = [&](void*) {
        std::string line;
        socket->ReceiveLine(line);
        lines += line + " ";
    };
    first.On("line", [&](void* context) {
        readLine(context);
        EXPECT_TRUE(socket->Close(true));
        EXPECT_EQ(socket->Create(&second, 0, IpAddress(), false), socket.get());
        EXPECT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    });
    second.On("line", readLine);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    second.Await("line:0");
    EXPECT_EQ(lines, "one four ");
    EXPECT_EQ(first.Count("line"), 1) << first.Words();
    EXPECT_EQ(first.Count("close"), 1) << first.Words();
    EXPECT_EQ(second.Count("line"), 1) << second.Words();
}

TEST_F(LineSocketTest, StartsAfreshWhenOpenedAgain) {
    TcpServer server(
        [](Connection& connection) {
            connection.Send("left over");
            connection.HalfClose();
            connection.AwaitEnd();
        },
        2);
    RecordingListener listener;
    const auto socket = OpenLineSocket(listener);
    socket->SetLineMode(false);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("close:0");
    EXPECT_EQ(socket->Available(), 9u);
    ASSERT_EQ(socket->Create(&listener, 0, IpAddress(), false), socket.get());
    EXPECT_EQ(socket->Available(), 0u);
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("close:0", 2);
    EXPECT_EQ(socket->Available(), 9u);
    EXPECT_EQ(socket->BytesReceived(), 18u);
}

// Closing does not wait for a receive loop, and none is left behind.
TEST_F(LineSocketTest, CanBeClosedWhileDataFloodsIn) {
    TcpServer server([](Connection& connection) {
        const std::string lines(100000, '\n');
        for (int index = 0; index < 20; ++index) {
            connection.Send(lines);
        }
    });
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
