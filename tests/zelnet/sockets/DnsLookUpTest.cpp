// Look-ups over a socket of the test's own: what the network does comes in the order, and from the
// senders, that a test wants.

#include "ZelNet/SourceCode/sockets/ADns.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <functional>

namespace ZelNet {
namespace {

using namespace std::string_literals;

struct Datagram {
    const char* sender;
    std::uint16_t port;
    std::string data;
};

// Never says by itself that it can send.
class FakeUdpSocket final : public UdpNonBlockingClientSocket {
public:
    bool Create(UdpNonBlockingSocketListener* listener, std::uint16_t, const IpAddress&) override {
        if (beforeCreate) {
            beforeCreate();
        }
        listener_ = listener;
        return !refuses;
    }
    bool Bind(std::uint16_t, const IpAddress&) override { return true; }
    std::uint32_t SendTo(const std::string& address, std::uint16_t port, const void*,
                         std::uint32_t size) override {
        sent += address + ":" + std::to_string(port) + " ";
        return size;
    }
    std::uint32_t ReceiveFrom(void* buffer, std::uint32_t size, IpAddress& address,
                              std::uint16_t& port) override {
        const Datagram next = std::move(arriving.front());
        arriving.pop_front();
        EXPECT_LE(next.data.size(), size);
        std::memcpy(buffer, next.data.data(), next.data.size());
        address = IpAddress(next.sender);
        port = next.port;
        return static_cast<std::uint32_t>(next.data.size());
    }
    bool Close(bool) override {
        auto* listener = std::exchange(listener_, nullptr);
        if (listener) {
            listener->OnClose(nullptr, 0);
        }
        return listener != nullptr;
    }
    void SetContext(void*) override {}

    void CanSend() {
        if (listener_) {
            listener_->OnSend(nullptr, 0);
        }
    }
    // Delivers what arrives until the look-up closes the socket.
    void Receive() {
        while (listener_ && !arriving.empty()) {
            listener_->OnReceive(nullptr, 0);
        }
    }

    std::function<void()> beforeCreate;
    bool refuses = false;
    std::deque<Datagram> arriving;
    std::string sent;

private:
    UdpNonBlockingSocketListener* listener_ = nullptr;
};

class DnsLookUp : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dns_);
        ASSERT_TRUE(dns_->SetDnsServers({"10.0.0.1", "10.0.0.2"}));
    }

    bool Resolve() {
        told_.clear();
        return dns_->ResolveName("a.example", &DnsLookUp::Store, &told_);
    }

    static void Store(bool success, void* told, const std::vector<DnsRecord>& records) {
        auto& text = *static_cast<std::string*>(told);
        text += success ? "ok" : "failed";
        for (const DnsRecord& record : records) {
            text += " " + record.address.GetText();
        }
    }

    // An answer for "a.example" with the address 10.9.9.`last`.
    static std::string Answer(char last) {
        return "\0\1\x81\x80\0\1\0\1\0\0\0\0\1a\7example\0\0\1\0\1"
               "\xC0\x0C\0\1\0\1\0\0\0\x3C\0\4\x0A\x09\x09"s +
               last;
    }

    std::shared_ptr<FakeUdpSocket> socket_ = std::make_shared<FakeUdpSocket>();
    std::unique_ptr<ADns> dns_ = ADns::Create(socket_);
    std::string told_;
};

TEST_F(DnsLookUp, TakesTheFirstAnswerToItsQuestionFromTheServersThatItAsked) {
    std::string otherName = Answer(1);
    otherName[13] = 'b';
    std::string otherCase = Answer(1);
    otherCase[13] = 'A';
    std::string none = Answer(1).substr(0, 27);
    none[7] = 0;
    const struct {
        const char* sender;
        std::uint16_t port;
        std::string first;
        const char* told;
    } cases[] = {
        {"10.0.0.1", 53, Answer(1), "ok 10.9.9.1"},
        {"10.0.0.2", 53, Answer(1), "ok 10.9.9.1"},
        {"10.0.0.1", 54, Answer(1), "ok 10.9.9.2"},
        {"10.0.0.2", 0, Answer(1), "ok 10.9.9.2"},
        {"10.0.0.3", 53, Answer(1), "ok 10.9.9.2"},
        {"127.0.0.1", 53, Answer(1), "ok 10.9.9.2"},
        {"0.0.0.0", 53, Answer(1), "ok 10.9.9.2"},
        {"10.0.0.1", 53, "xy" + Answer(1).substr(2), "ok 10.9.9.1"}, // another identifier
        {"10.0.0.1", 53, otherName, "ok 10.9.9.2"},
        {"10.0.0.1", 53, otherCase, "ok 10.9.9.2"},
        {"10.0.0.1", 53, none, "ok 10.9.9.2"}, // an empty answer is the last resort
        {"10.0.0.1", 53, Answer(1).substr(0, 30), "ok 10.9.9.2"},
    };
    for (const auto& row : cases) {
        ASSERT_TRUE(Resolve());
        socket_->CanSend();
        socket_->arriving = {{row.sender, row.port, row.first}, {"10.0.0.2", 53, Answer(2)}};
        socket_->Receive();
        EXPECT_EQ(told_, row.told) << &row - cases;
    }
}

TEST_F(DnsLookUp, IsOneAtATime) {
    for (const std::string& name : {""s, "a..b"s, std::string(64, 'a'), std::string(70000, 'a')}) {
        EXPECT_FALSE(dns_->ResolveName(name, &DnsLookUp::Store, &told_));
    }
    EXPECT_FALSE(dns_->Abort());
    ASSERT_TRUE(Resolve());
    EXPECT_FALSE(dns_->ResolveName("other.example", &DnsLookUp::Store, &told_));
    EXPECT_FALSE(dns_->SetDnsServers({"10.0.0.3"}));
    EXPECT_TRUE(dns_->Abort());
    EXPECT_EQ(told_, "failed");
    EXPECT_TRUE(dns_->SetDnsServers({"0.0.0.0"}));
    EXPECT_FALSE(Resolve()); // no server
    EXPECT_TRUE(dns_->SetDnsServers({"10.0.0.3"}));
    ASSERT_TRUE(Resolve());
    socket_->arriving = {{"10.0.0.3", 53, Answer(3)}};
    socket_->Receive();
    EXPECT_EQ(told_, "ok 10.9.9.3");
}

TEST_F(DnsLookUp, MayBeReleasedInItsCallbackOrWhileBusy) {
    ASSERT_TRUE(Resolve());
    dns_.reset();
    EXPECT_EQ(told_, "failed");
    dns_ = ADns::Create(socket_);
    dns_->SetDnsServers({"10.0.0.1"});
    const auto release = [](bool success, void* dns, const std::vector<DnsRecord>&) {
        EXPECT_TRUE(success);
        static_cast<std::unique_ptr<ADns>*>(dns)->reset();
    };
    ASSERT_TRUE(dns_->ResolveName("a.example", release, &dns_));
    socket_->arriving = {{"10.0.0.1", 53, Answer(1)}};
    socket_->Receive();
    EXPECT_FALSE(dns_);
}

TEST_F(DnsLookUp, AsksOnceHoweverOftenItHearsThatItCanSend) {
    ASSERT_TRUE(Resolve());
    socket_->CanSend();
    socket_->CanSend();
    EXPECT_EQ(socket_->sent, "10.0.0.1:53 10.0.0.2:53 ");
}

TEST_F(DnsLookUp, CanBeAbortedBeforeItHasASocket) {
    for (const bool refuses : {false, true}) {
        socket_->refuses = refuses;
        socket_->beforeCreate = [&] { EXPECT_TRUE(dns_->Abort()); };
        EXPECT_TRUE(Resolve()) << "the callback was called";
        EXPECT_EQ(told_, "failed");
        EXPECT_FALSE(dns_->Abort());
        EXPECT_EQ(dns_->SetDnsServers({"10.0.0.1"}), refuses) << "busy while there is a socket";
        socket_->CanSend(); // closes it
        EXPECT_TRUE(dns_->SetDnsServers({"10.0.0.1"}));
        EXPECT_EQ(socket_->sent, "");
    }
}

// The socket layer's shutdown, for one.
TEST_F(DnsLookUp, FailsWhenItsSocketIsClosed) {
    ASSERT_TRUE(Resolve());
    socket_->Close(true);
    EXPECT_EQ(told_, "failed");
    socket_->refuses = true;
    EXPECT_FALSE(Resolve());
    EXPECT_EQ(told_, "");
    socket_->refuses = false;
    EXPECT_TRUE(Resolve());
}

} // namespace
} // namespace ZelNet
