#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using UdpSocketTest = SocketLayerTest;

class Echo : public UdpNonBlockingSocketListener {
public:
    void OnClose(void* context, int error) override { words_.OnClose(context, error); }
    void OnReceive(void* context, int error) override { words_.OnReceive(context, error); }
    void OnSend(void* context, int error) override { words_.OnSend(context, error); }

    RecordingListener words_;
};

std::uint16_t UnusedUdpPort() {
    const UniqueSocket probe(socket(AF_INET, SOCK_DGRAM, 0));
    return BindToLoopback(probe.Get());
}

TEST_F(UdpSocketTest, SendsAndReceivesDatagrams) {
    const UniqueSocket peer(socket(AF_INET, SOCK_DGRAM, 0));
    const std::uint16_t port = BindToLoopback(peer.Get());
    Echo listener;
    const auto udp = UdpNonBlockingClientSocket::Create();
    ASSERT_TRUE(udp->Create(&listener, 0, LoopbackAddress()));
    EXPECT_FALSE(udp->Create(&listener, 0, LoopbackAddress()));
    listener.words_.Await("send:0"); // datagrams can be sent at once
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
    listener.words_.Await("receive:0");
    IpAddress sender;
    std::uint16_t senderPort = 0;
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 4u);
    EXPECT_EQ(sender, LoopbackAddress());
    EXPECT_EQ(senderPort, port);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 0u); // does not fit
    listener.words_.Await("receive:0", 2);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 5u);
    EXPECT_EQ(udp->ReceiveFrom(buffer, sizeof buffer, sender, senderPort), 0u); // none left
    EXPECT_TRUE(udp->Close(false));
    listener.words_.Await("close:0");
    EXPECT_EQ(listener.words_.Count("close"), 1);
    EXPECT_TRUE(udp->Create(&listener, 0, IpAddress()));
}

TEST_F(UdpSocketTest, CanBeClosedAndReleasedInEveryCallback) {
    for (const std::string callback : {"send", "receive", "close"}) {
        for (const std::string how :
             {"close now", "close later", "release", "open again", "throw"}) {
            const std::uint16_t port = UnusedUdpPort();
            Echo listener;
            Echo second;
            auto udp = UdpNonBlockingClientSocket::Create();
            listener.words_.On(callback, [&](void*) {
                if (how == "throw") {
                    throw std::bad_alloc();
                }
                if (how == "release") {
                    udp.reset();
                } else if (how == "open again") {
                    udp->Close(true);
                    EXPECT_TRUE(udp->Create(&second, 0, LoopbackAddress()));
                } else {
                    udp->Close(how == "close now");
                }
            });
            ASSERT_TRUE(udp->Create(&listener, port, LoopbackAddress()));
            if (callback == "receive") {
                udp->SendTo("127.0.0.1", port, "self", 4);
            } else if (callback == "close") {
                udp->Close(false);
            }
            if (how == "throw") { // a listener that fails must hear the end, unless it was that
                listener.words_.Await(callback == "close" ? "send:0" : "close:3");
                EXPECT_EQ(listener.words_.Count("close:3"), callback == "close" ? 0 : 1)
                    << listener.words_.Words();
                continue;
            }
            const bool told = how != "release" || callback == "close";
            listener.words_.Await(told ? "close:0" : callback + ":0");
            EXPECT_EQ(listener.words_.Count("close"), told ? 1 : 0)
                << callback << ", " << how << ": " << listener.words_.Words();
            if (how == "open again") {
                second.words_.Await("send:0");
                EXPECT_EQ(second.words_.Count("close"), 0) << callback;
            }
        }
    }
    EXPECT_EQ(Settled(ThreadCount, ThreadCountAtStart()), ThreadCountAtStart());
}

// Whoever holds the log's mutex makes the event thread wait with the slot locked.
TEST_F(UdpSocketTest, LosesNoCloseToABusySlot) {
    const ZelBase::UniqueHandle log(
        OpenMutexA(SYNCHRONIZE, FALSE, "Global\\ZelKit::WIN32_Logger::Mutex2"));
    ASSERT_TRUE(log);
    const std::uint16_t port = UnusedUdpPort();
    Echo listener;
    const auto udp = UdpNonBlockingClientSocket::Create();
    ASSERT_TRUE(udp->Create(&listener, port, LoopbackAddress()));
    listener.words_.Await("send:0");
    Sleep(50); // for the thread to settle
    ASSERT_EQ(WaitForSingleObject(log.Get(), kPatienceMs), WAIT_OBJECT_0);
    EXPECT_EQ(udp->SendTo("127.0.0.1", port, "self", 4), 4u);
    Sleep(50); // for the thread to look into it
    EXPECT_TRUE(udp->Close(false));
    ReleaseMutex(log.Get());
    listener.words_.Await("close:0");
    EXPECT_EQ(listener.words_.Count("close:0"), 1) << listener.words_.Words();
}

} // namespace
} // namespace ZelNet
