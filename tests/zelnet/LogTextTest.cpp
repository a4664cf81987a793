// Viewers, and people, know the objects of this library by the texts that they log.

#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "tests/zelnet/FakeIpHelper.h"
#include "tests/zelnet/SocketTesting.h"
#include "tests/zelnet/TraceCollector.h"

namespace ZelNet {
namespace {

class LogText : public testing::Test {
protected:
    void ExpectAll(const std::string& component, std::initializer_list<const char*> patterns) {
        for (const char* pattern : patterns) {
            EXPECT_TRUE(traces_.Has(component + "|" + pattern)) << component << "|" << pattern;
        }
    }

    TraceCollector traces_;
};

TEST_F(LogText, OfTheSocketLayerAndTcp) {
    {
        SocketLayerScope layer;
        TcpServer server([](Connection& connection) {
            connection.Send("data");
            connection.AwaitEnd();
        });
        RecordingListener listener;
        const auto socket = TcpNonBlockingClientSocket::Create();
        char buffer[10];
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("nonsense"), false));
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("255.255.255.255"), false));
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("192.0.2.1"), false));
        EXPECT_FALSE(socket->Shutdown(SD_BOTH));
        IpAddress peer;
        std::uint16_t port = 0;
        EXPECT_FALSE(socket->GetPeer(peer, port));
        EXPECT_EQ(socket->Send("x", 1), 0u);
        ASSERT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
        EXPECT_TRUE(socket->Close(false)); // is posted, because nothing is being delivered
        listener.Await("close:0");
        ASSERT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(), false));
        EXPECT_FALSE(socket->Connect("", 1));
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        listener.Await("receive:0");
        listener.Await("send:0");
        EXPECT_EQ(socket->Peek(buffer, 4), 4u);
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 4u);
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 0u);
        EXPECT_TRUE(socket->Close(false));
        listener.Await("close:0", 2);
        ExpectAll("WIN32_SETManager",
                  {"ReleaseThread|3|Marking thread for self-destruct.  ZelBase::Thread: *, "
                   "Count: 0."});
    }
    ExpectAll("DEBUG", {"InitializeSockets|3|Count = 1", "UninitializeSockets|3|Count = 0"});
    ExpectAll("WIN32_SETManager",
              {"ReleaseThread|3|Deleting thread.  ZelBase::Thread: *, Count: 0."});
    ExpectAll("WIN32_SocketEventThread",
              {"AddSocket|3|Adding socket #0 from listener: * with event: * to thread: * count: 1",
               "RemoveSocket|3|removing socket #0 from listener: * with event: * from thread: *",
               "RemoveSocket|3|Releasing thread: *", "Run|3|Socket #0, event = * alive.",
               "Run|3|Waiting for socket events with 1 sockets", "Run|3|Waking up for change event",
               "Run|3|Processing post event for event: 1", "Run|3|Clearing events",
               "Run|3|Clearing event: *", "Run|3|Network events: * on event: *",
               "Run|3|Processing events that do no belong to this socket."});
    ExpectAll("WIN32_TcpNonBlockingClientSocket",
              {"Create|3|Calling Create.",
               "Create|3|Socket creation succeeded.  handle: *",
               "Bind|0|Invalid argument.",
               "Bind|0|Invalid IP address.",
               "Bind|0|Bind failed with code: *",
               "Create|0|Bind failed.",
               "Bind|3|Bind succeeded.",
               "Create|0|Socket already created.",
               "Connect|0|Invalid argument.",
               "Connect|3|Calling Connect.",
               "FinishConnect|3|Connect returned would block.",
               "OnConnect|3|Calling OnConnect with errorcode 0",
               "OnReceive|3|Calling OnReceive",
               "OnSend|3|Calling OnSend()",
               "Peek|3|Calling Peek.",
               "Receive|3|Calling Receive.",
               "Receive|0|recv() failed with error code: 10035.",
               "Send|0|send() failed with error code: *.",
               "Shutdown|0|shutdown() failed with error code: *.",
               "GetPeer|0|getpeername() failed with error code: *.",
               "Close|3|Calling Close.",
               "Close|3|Calling Shutdown() on socket *.",
               "OnClose|3|OnClose Begin",
               "OnClose|3|Calling closesocket() on socket *."});
}

TEST_F(LogText, OfASocketThatIsNotOpen) {
    {
        SocketLayerScope layer;
        const auto socket = TcpNonBlockingClientSocket::Create();
        EXPECT_FALSE(socket->Close(true));
    }
    ExpectAll("DEBUG", {"UninitializeSockets|3|Count = 0"}); // all before it is collected, too
    EXPECT_FALSE(traces_.Has("WIN32_TcpNonBlockingClientSocket|Close|3|Calling Close.", 0));
}

TEST_F(LogText, OfUdp) {
    SocketLayerScope layer;
    class : public UdpNonBlockingSocketListener {
    public:
        void OnClose(void*, int) override {}
        void OnReceive(void* context, int) override {
            IpAddress sender;
            std::uint16_t port = 0;
            char data[10];
            static_cast<UdpNonBlockingClientSocket*>(context)->ReceiveFrom(data, 10, sender, port);
        }
        void OnSend(void*, int) override {}
    } listener;
    const auto udp = UdpNonBlockingClientSocket::Create();
    const UniqueSocket probe(socket(AF_INET, SOCK_DGRAM, 0));
    const std::uint16_t unused = BindToLoopback(probe.Get());
    ASSERT_TRUE(udp->Create(&listener, 0, LoopbackAddress()));
    EXPECT_EQ(udp->SendTo("localhost", unused, "x", 1), 0u);
    EXPECT_EQ(udp->SendTo("127.0.0.1", unused, "x", 1), 1u);
    sockaddr_in from{};
    int length = sizeof from;
    char data[10];
    ASSERT_EQ(recvfrom(probe.Get(), data, 10, 0, reinterpret_cast<sockaddr*>(&from), &length), 1);
    sendto(probe.Get(), data, 1, 0, reinterpret_cast<sockaddr*>(&from), length);
    const std::string source = "Port = " + std::to_string(unused) + ", Address = 127.0.0.1";
    ExpectAll("WIN32_UdpNonBlockingClientSocket",
              {"SendTo|0|Hostname resolution not supported.", ("ReceiveFrom|3|" + source).c_str()});
    // That it can send, which not every system says by itself.
    ExpectAll("WIN32_SocketEventThread", {"Run|3|Processing post event for event: 3"});
}

TEST_F(LogText, OfTheLineSocket) {
    SocketLayerScope layer;
    TcpServer server([](Connection& connection) {
        connection.Receive(4);
        connection.Send("one\r\ntwo");
        connection.AwaitEnd();
    });
    RecordingListener listener;
    const auto socket = ATcpNonBlockingLineSocket::Create();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
    listener.Await("send:0");
    EXPECT_EQ(socket->Send("four", 4), 4u);
    listener.Await("line:0");
    std::string line;
    EXPECT_EQ(socket->ReceiveLine(line), 3u);
    EXPECT_EQ(socket->ReceiveLine(line), ATcpNonBlockingLineSocket::kNoLine);
    ExpectAll("ATcpNonBlockingLineSocket",
              {"SendData|3|SendData begin.",
               "SendData|3|No data in the send buffer.  Passing OnSend to caller.",
               "SendData|3|Sent 4 bytes of data from the send queue", "ReceiveData|3|Size = 8",
               "ReceiveData|3|NL found at index 4",
               "ReceiveLine|3|Called with 8 available characters",
               "ReceiveLine|3|No LF found in available data"});
}

TEST_F(LogText, OfALookUpWithoutServers) {
    for (const std::vector<std::string>& servers :
         {std::vector<std::string>{}, std::vector<std::string>{"0.0.0.0"}}) {
        TraceCollector traces;
        SocketLayerScope layer;
        WIN32_NetworkInfo network(std::make_shared<FakeIpHelper>(servers));
        std::vector<IpAddress> results;
        EXPECT_TRUE(network.DNSLookup("", "localhost", 1234, results));
        EXPECT_EQ(results, std::vector<IpAddress>{LoopbackAddress()});
        for (const char* text : {"3|Server = , TimeOut = 1234ms", "1|Failed to find servers.",
                                 "3|System Call is being performed.", "3|Found 127.0.0.1"}) {
            EXPECT_TRUE(traces.Has("WIN32_NetworkInfo|DNSLookup|" + std::string(text))) << text;
        }
    }
}

// Of the namespace that tests/network/zelnet.sh makes, whose servers the system names.
class NamespaceLogText : public LogText {
protected:
    void SetUp() override {
        if (!std::getenv("TERVANE_NAMESPACE")) {
            GTEST_SKIP() << "run by tests/network/zelnet.sh, in a network of its own";
        }
    }
};

TEST_F(NamespaceLogText, OfLookUps) {
    SocketLayerScope layer;
    WIN32_NetworkInfo network(std::make_shared<FakeIpHelper>(
        std::vector<std::string>{"127.0.0.21", "0.0.0.0", "127.0.0.22"}));
    std::vector<IpAddress> results;
    EXPECT_TRUE(network.DNSLookup("", "chain.example", kPatienceMs, results));
    EXPECT_FALSE(network.DNSLookup("", "silent.example", 200, results));
    RecordingListener listener;
    const auto socket = TcpNonBlockingClientSocket::Create();
    ASSERT_TRUE(socket->Create(&listener, 0, IpAddress(), false));
    ASSERT_TRUE(socket->Connect("local.example", 1));
    listener.Await("connect");
    ExpectAll("WIN32_NetworkInfo",
              {"DNSLookup|3|Server = , TimeOut = 200ms", "DNSLookup|3|Found Server 127.0.0.21.",
               "DNSLookup|3|Found Server 127.0.0.22.", "ADnsCallBack|3|Success = Ok, pParam = *",
               "ADnsCallBack|3|Success = Failed, pParam = *",
               "ADnsCallBack|3|Signaling ZelBase::Event.", "DNSLookup|1|Timed Out or got an Abort.",
               "DNSLookup|3|Found 10.0.0.1"});
    ExpectAll("ADns",
              {"SetDnsServers|3|Adding Target DNS Server: 127.0.0.21",
               "SetDnsServers|1|Ignoring Known Invalid Target DNS Server: 0.0.0.0",
               "ResolveName|3|Resolving chain.example",
               "OnSend|3|Socket is ready to send (Error Code = 0)", "OnSend|3|Send Complete",
               "OnReceive|3|There is data to pull from socket (Error Code = 0)",
               "OnReceive|3|Read * bytes from socket", "OnReceive|3|Found CNAME other.example.",
               "OnReceive|1|Unknown data of 3 bytes in length.",
               "OnReceive|3|Found Address 10.0.0.1.", "Report|3|Socket has been closed.",
               "Report|3|Callback has been notified of success.",
               "OnClose|3|The socket is closed, no longer pending (Error Code = 0)",
               "Abort|3|Aborting DNS Resolution.", "Report|3|Socket is closed",
               "Report|3|Callback has been notified of error."});
    ExpectAll("WIN32_SocketEventThread", {"Run|3|Processing post event for event: 4"});
}

} // namespace
} // namespace ZelNet
