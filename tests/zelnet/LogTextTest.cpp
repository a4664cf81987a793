// Viewers, and people, know the objects of this library by the texts that they log.

#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"
#include "tests/support/FakeIpHelper.h"
#include "tests/zelnet/SocketTesting.h"

#include <sstream>

namespace ZelNet {
namespace {

using tervane::test::FakeIpHelper;

class LogText : public testing::Test {
protected:
    // One record each line.
    void ExpectAll(const std::string& component, const char* patterns) {
        std::istringstream lines(patterns);
        for (std::string line; std::getline(lines >> std::ws, line);) {
            EXPECT_TRUE(log_.Has(component + "|" + line)) << component << "|" << line;
        }
    }

    LogReader log_;
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
        for (const char* address : {"nonsense", "255.255.255.255", "192.0.2.1"}) {
            EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(address), false));
        }
        EXPECT_FALSE(socket->Shutdown(SD_BOTH));
        IpAddress peer;
        std::uint16_t port = 0;
        EXPECT_FALSE(socket->GetPeer(peer, port));
        EXPECT_EQ(socket->Send("x", 1), 0u);
        log_.Collect();
        ASSERT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
        EXPECT_TRUE(socket->Close(false)); // is posted, because nothing is being delivered
        listener.Await("close:0");
        log_.Collect();
        ASSERT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(), false));
        EXPECT_FALSE(socket->Connect("", 1));
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        listener.Await("receive:0");
        listener.Await("send:0");
        log_.Collect();
        char buffer[10];
        EXPECT_EQ(socket->Peek(buffer, 4), 4u);
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 4u);
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 0u);
        EXPECT_TRUE(socket->Close(false));
        listener.Await("close:0", 2);
        ExpectAll("WIN32_SETManager", "ReleaseThread|3|Marking thread for self-destruct.  "
                                      "ZelBase::Thread: *, Count: 0.");
    }
    ExpectAll("DEBUG", R"(InitializeSockets|3|Count = 1
                          UninitializeSockets|3|Count = 0)");
    ExpectAll("WIN32_SETManager",
              "ReleaseThread|3|Deleting thread.  ZelBase::Thread: *, Count: 0.");
    ExpectAll("WIN32_SocketEventThread",
              R"(AddSocket|3|Adding socket #0 from listener: * with event: * to thread: * count: 1
                 RemoveSocket|3|removing socket #0 from listener: * with event: * from thread: *
                 RemoveSocket|3|Releasing thread: *
                 Run|3|Socket #0, event = * alive.
                 Run|3|Waiting for socket events with 1 sockets
                 Run|3|Processing post event for event: 1
                 Run|3|Network events: * on event: *
                 Run|3|Processing events that do no belong to this socket.)");
    ExpectAll("WIN32_TcpNonBlockingClientSocket",
              R"(Create|3|Calling Create.
                 Create|3|Socket creation succeeded.  handle: *
                 Bind|0|Invalid IP address.
                 Bind|0|Bind failed with code: *
                 Create|0|Bind failed.
                 Bind|3|Bind succeeded.
                 Create|0|Socket already created.
                 FinishConnect|3|Connect returned would block.
                 OnConnect|3|Calling OnConnect with errorcode 0
                 Receive|0|recv() failed with error code: 10035.
                 Send|0|send() failed with error code: *.
                 Shutdown|0|shutdown() failed with error code: *.
                 GetPeer|0|getpeername() failed with error code: *.
                 Close|3|Calling Shutdown() on socket *.
                 OnClose|3|Calling closesocket() on socket *.)");
}

TEST_F(LogText, OfALookUpWithoutServers) {
    SocketLayerScope layer;
    DWORD timeOut = 1233;
    for (const std::vector<std::string>& servers :
         {std::vector<std::string>{}, std::vector<std::string>{"0.0.0.0"}}) {
        const auto library = std::make_shared<FakeIpHelper>();
        library->nameServers = servers;
        WIN32_NetworkInfo network(library);
        std::vector<IpAddress> results;
        EXPECT_TRUE(network.DNSLookup("", "localhost", ++timeOut, results));
        EXPECT_EQ(results, std::vector<IpAddress>{LoopbackAddress()});
        ExpectAll("WIN32_NetworkInfo",
                  ("DNSLookup|3|Server = , TimeOut = " + std::to_string(timeOut) +
                   "ms\nDNSLookup|1|Failed to find servers.\nDNSLookup|3|System Call is being "
                   "performed.\nDNSLookup|3|Found 127.0.0.1")
                      .c_str());
    }
}

} // namespace
} // namespace ZelNet
