// Viewers, and people, know the objects of this library by the texts that they log.

#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"
#include "tests/support/FakeIpHelper.h"
#include "tests/support/ScriptedServer.h"
#include "tests/zelnet/SocketTesting.h"

#include <sstream>

namespace ZelNet {
namespace {

using tervane::test::FakeIpHelper;
using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

void ExpectRecords(LogReader& log, const std::string& component, const std::string& patterns) {
    std::istringstream lines(patterns);
    for (std::string line; std::getline(lines >> std::ws, line);) {
        EXPECT_TRUE(log.Has(component + "|" + line)) << component << "|" << line;
    }
}

TEST(LogText, OfTheSocketLayerAndTcp) {
    LogReader log;
    {
        SocketLayerScope layer;
        ScriptedServer server({Script{"S:data"}});
        RecordingListener listener;
        const auto socket = TcpNonBlockingClientSocket::Create();
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress("255.255.255.255"), false));
        EXPECT_EQ(socket->Send("x", 1), 0u);
        log.Collect();
        ASSERT_TRUE(socket->Create(&listener, 0, LoopbackAddress(), false));
        EXPECT_FALSE(socket->Create(&listener, 0, IpAddress(), false));
        ASSERT_TRUE(socket->Connect("127.0.0.1", server.Port()));
        listener.Await("receive:0");
        log.Collect();
        char buffer[10];
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 4u);
        EXPECT_EQ(socket->Receive(buffer, sizeof buffer), 0u);
        EXPECT_TRUE(socket->Close(false));
        listener.Await("close:0");
        log.Collect();
    }
    ExpectRecords(log, "DEBUG", "InitializeSockets|3|Count = 1\nUninitializeSockets|3|Count = 0");
    ExpectRecords(log, "WIN32_SETManager",
                  "ReleaseThread|3|Deleting thread.  ZelBase::Thread: *, Count: 0.");
    ExpectRecords(
        log, "WIN32_SocketEventThread",
        R"(AddSocket|3|Adding socket #0 from listener: * with event: * to thread: * count: 1
           RemoveSocket|3|removing socket #0 from listener: * with event: * from thread: *
           Run|3|Waiting for socket events with 1 sockets
           Run|3|Network events: * on event: *)");
    ExpectRecords(log, "WIN32_TcpNonBlockingClientSocket",
                  R"(Create|3|Socket creation succeeded.  handle: *
                     Bind|0|Invalid IP address.
                     Create|0|Bind failed.
                     Bind|3|Bind succeeded.
                     Create|0|Socket already created.
                     FinishConnect|3|Connect returned would block.
                     OnConnect|3|Calling OnConnect with errorcode 0
                     Receive|0|recv() failed with error code: 10035.
                     Send|0|send() failed with error code: *.
                     Close|3|Calling Shutdown() on socket *.
                     OnClose|3|Calling closesocket() on socket *.)");
}

TEST(LogText, OfALookUpWithoutServers) {
    SocketLayerScope layer;
    LogReader log;
    const auto library = std::make_shared<FakeIpHelper>();
    library->nameServers.emplace();
    WIN32_NetworkInfo network(library);
    for (const char* timeOut : {"1234", "1235"}) {
        std::vector<IpAddress> results;
        EXPECT_TRUE(network.DNSLookup("", "localhost", std::stoul(timeOut), results));
        EXPECT_EQ(results, std::vector<IpAddress>{LoopbackAddress()});
        ExpectRecords(log, "WIN32_NetworkInfo",
                      std::string("DNSLookup|3|Server = , TimeOut = ") + timeOut +
                          "ms\nDNSLookup|1|Failed to find servers.\nDNSLookup|3|System Call is "
                          "being performed.\nDNSLookup|3|Found 127.0.0.1");
        library->nameServers->assign({"0.0.0.0"});
    }
}

} // namespace
} // namespace ZelNet
