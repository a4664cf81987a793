#include <winsock2.h>

#include "bench/NetworkBench.h"

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogRing.h"
#include "ZelNet/SourceCode/ALineSocket.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "bench/BareTransfer.h"
#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "bench/RequestCount.h"
#include "tests/support/TestThreads.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace bench {
namespace {

constexpr std::size_t kMegabyte = 1000000;
const std::string kLine = std::string(78, 'x') + "\r\n"; // a mail's usual line

// A server for one connection, which it fills with lines or empties.
class LoopbackServer {
public:
    enum class Does { SendLines, Receive };

    LoopbackServer(Does does, std::size_t bytes) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int size = sizeof address;
        bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
        listen(socket_, 1);
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        thread_ = tervane::test::TestThread([this, does, bytes] { Serve(does, bytes); });
    }
    ~LoopbackServer() {
        thread_.join();
        closesocket(socket_);
    }
    std::uint16_t Port() const { return port_; }

private:
    void Serve(Does does, std::size_t bytes) const {
        const SOCKET connection = accept(socket_, nullptr, nullptr);
        std::string block;
        while (block.size() < 64000) {
            block += kLine;
        }
        while (bytes > 0) {
            const int part = static_cast<int>(std::min(bytes, block.size()));
            const int done = does == Does::SendLines ? send(connection, block.data(), part, 0)
                                                     : recv(connection, block.data(), part, 0);
            Require(done > 0, "serving over loopback");
            bytes -= static_cast<std::size_t>(done);
        }
        closesocket(connection);
    }

    SOCKET socket_;
    std::uint16_t port_ = 0;
    tervane::test::TestThread thread_;
};

// Our side: takes all lines, or sends all data, and signals the end.
class LineClient final : public ZelNet::TcpNonBlockingLineSocketListener {
public:
    void Run(LoopbackServer::Does does, std::size_t bytes) {
        const LoopbackServer server(does, bytes);
        sending_ = does == LoopbackServer::Does::Receive ? bytes : 0;
        socket_ = ZelNet::ATcpNonBlockingLineSocket::Create();
        Require(socket_ && socket_->Create(this, 0, ZelNet::IpAddress(), false) &&
                    socket_->Connect("127.0.0.1", server.Port()),
                "connecting the line socket");
        WaitForSingleObject(ended_.Get(), INFINITE);
        Require(sending_ > 0 || lines_ == bytes / kLine.size(), "receiving every line");
        socket_.reset();
    }

    void OnConnect(void*, int error) override {
        Require(error == 0, "connecting the line socket");
        if (sending_ > 0) {
            const std::string all(sending_, 'x');
            socket_->Send(all.data(), static_cast<std::uint32_t>(all.size()));
        }
    }
    void OnReceiveLine(void*, int) override { lines_ += socket_->ReceiveLine(line_) == 78; }
    void OnReceive(void*, int) override {}
    void OnSend(void*, int) override {}
    void OnClose(void*, int) override { SetEvent(ended_.Get()); }

private:
    std::unique_ptr<ZelNet::ATcpNonBlockingLineSocket> socket_;
    const ZelBase::UniqueHandle ended_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::string line_;
    std::size_t sending_ = 0;
    std::size_t lines_ = 0;
};

void BareClient(LoopbackServer::Does does, std::size_t bytes, std::uint32_t records) {
    const LoopbackServer server(does, bytes);
    BareConnection connection(server.Port());
    does == LoopbackServer::Does::SendLines ? connection.Receive(bytes, records)
                                            : connection.Send(bytes, records);
}

double Seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void CompareDirection(const char* name, LoopbackServer::Does does, const TransferSizes& sizes) {
    std::unique_ptr<ZelBase::LogRing> ring;
    ZelBase::LogRing::OpenShared(INFINITE, ring);
    double secondsPerMegabyte[2] = {};
    int run = 0;
    for (const int megabytes : {sizes.small, sizes.large}) {
        const std::size_t bytes = static_cast<std::size_t>(megabytes) * kMegabyte;
        const std::uint32_t before = ring->Section().written;
        const double ours = Seconds([&] { LineClient().Run(does, bytes); });
        const std::uint32_t records = ring->Section().written - before;
        const double bare = Seconds([&] { BareClient(does, bytes, 0); });
        const double tracing = Seconds([&] { BareClient(does, bytes, records); });
        const std::string what = std::to_string(megabytes) + " MB of lines " + name;
        PrintRow({what + " : 512 bytes at a time, as many records", ours, tracing, "s", 1.2});
        PrintRow({"  " + what + " : the same without records", ours, bare, "s"});
        secondsPerMegabyte[run++] = ours / megabytes;
    }
    PrintRow({"  a byte of " + std::to_string(sizes.large) + " MB " + name + " : one of " +
                  std::to_string(sizes.small) + " MB",
              1e3 * secondsPerMegabyte[1], 1e3 * secondsPerMegabyte[0], "ms/MB", 1.1});
}

} // namespace

void CompareLineSocket(const TransferSizes& sizes) {
    Require(ZelNet::InitializeSockets(), "starting the socket layer");
    LineClient().Run(LoopbackServer::Does::SendLines, kMegabyte / 10); // warms up
    CompareDirection("received", LoopbackServer::Does::SendLines, sizes);
    CompareDirection("sent", LoopbackServer::Does::Receive, sizes);
    ZelNet::UninitializeSockets();
}

void CountLineSocket() {
    Require(ZelNet::InitializeSockets(), "starting the socket layer");
    LineClient().Run(LoopbackServer::Does::SendLines, kMegabyte / 10);
    MarkRequests({"512 bytes of lines taken by the line socket", kMegabyte / 512, 44});
    LineClient().Run(LoopbackServer::Does::SendLines, kMegabyte);
    MarkEndOfRequests();
    ZelNet::UninitializeSockets();
}

void CompareLookUps() {
    constexpr int kNames = 1000;
    constexpr std::uint32_t kTimeout = 5000; // ms
    Require(ZelNet::InitializeSockets(), "starting the socket layer");
    const auto network = ZelNet::NetworkInfo::Create();
    Require(network && !network->DnsServers().empty(), "finding the system's name servers");
    int next = 0;
    const auto name = [&next] { return "name" + std::to_string(next++) + ".bench.example"; };
    Compare(
        {"DNSLookup : gethostbyname", 1.0, 1, kNames},
        [&] {
            std::vector<ZelNet::IpAddress> found;
            Require(network->DNSLookup("", name(), kTimeout, found) && found.size() == 1,
                    "looking a name up");
        },
        [&] { Require(gethostbyname(name().c_str()) != nullptr, "gethostbyname"); });
    ZelNet::UninitializeSockets();
}

} // namespace bench
