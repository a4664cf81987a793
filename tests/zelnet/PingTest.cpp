#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/WIN32_Ping.h"
#include "tests/support/SystemPing.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

TEST(Ping, FillsTheRequestWithPrintableCharacters) {
    EXPECT_EQ(APing::RequestData(20), "0123456789:;<=>?@ABC");
    EXPECT_EQ(APing::RequestData(2000), APing::RequestData(20));
    EXPECT_EQ(APing::RequestData(-1), APing::RequestData(20));
    EXPECT_EQ(APing::RequestData(0), "");
    const std::string largest = APing::RequestData(1400);
    EXPECT_EQ(largest.size(), 1400u);
    EXPECT_EQ(largest.substr(76, 4), "|} !"); // wraps to the blank
    EXPECT_EQ(largest.substr(76 + 94, 4), "|} !");
}

TEST(Ping, TranslatesTheReplysStatus) {
    const struct {
        std::uint32_t status;
        std::uint32_t replies;
        int result;
    } cases[] = {
        {0, 1, 42},     {0, 0, -6},     {11001, 0, -7}, {11002, 1, -5}, {11003, 1, -6},
        {11004, 1, -6}, {11005, 1, -6}, {11006, 0, -7}, {11009, 0, -7}, {11010, 0, -8},
        {11011, 0, -7}, {11012, 1, -5}, {11013, 1, -4}, {11014, 1, -7}, {11017, 1, -7},
        {11018, 1, -6}, {11019, 0, -7}, {11050, 0, -7}, {1, 1, -7},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(APing::Result(row.status, row.replies, 42), row.result) << row.status;
    }
}

class RealPing : public testing::Test {
protected:
    void SetUp() override {
        if (!tervane::test::SystemCanPing()) {
            GTEST_SKIP() << "the system does not let programs ping";
        }
        ping_ = APing::Create();
        ASSERT_TRUE(ping_);
    }

    std::unique_ptr<APing> ping_;
};

TEST_F(RealPing, ReachesTheLoopback) {
    IpAddress reply;
    std::uint32_t time = 12345;
    const int result = ping_->Ping(LoopbackAddress(), reply, time, 5000, 128, 10);
    EXPECT_GE(result, 0);
    EXPECT_EQ(reply, LoopbackAddress());
    EXPECT_EQ(time, static_cast<std::uint32_t>(result));
    EXPECT_GE(ping_->Ping(LoopbackAddress(), reply, time, 5000, 128, 1400), 0);
}

TEST_F(RealPing, LastsAsLongAsItsLastUser) {
    auto other = APing::Create();
    ASSERT_TRUE(other);
    ping_.reset();
    IpAddress reply;
    std::uint32_t time = 0;
    EXPECT_GE(other->Ping(LoopbackAddress(), reply, time, 5000, 128, 10), 0);
    other.reset();
    ping_ = APing::Create();
    ASSERT_TRUE(ping_);
    EXPECT_GE(ping_->Ping(LoopbackAddress(), reply, time, 5000, 128, 10), 0);
}

TEST_F(RealPing, ManyAtOnce) {
    constexpr int kThreads = 50;
    std::atomic<int> answered = 0;
    std::vector<ZelBase::UniqueHandle> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.push_back(ZelBase::ModulePin::StartThread([&answered] {
            const auto ping = APing::Create();
            IpAddress reply;
            std::uint32_t time = 0;
            const int result =
                ping ? ping->Ping(LoopbackAddress(), reply, time, 20000, 128, 10) : -1;
            answered += result >= 0 && reply == LoopbackAddress() ? 1 : 0;
        }));
    }
    for (const auto& thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread.Get(), 60000), WAIT_OBJECT_0);
    }
    EXPECT_EQ(answered, kThreads);
}

// Look-ups load IPHLPAPI.DLL, where the functions of ICMP.DLL lie, and unload it at their end.
bool PingsWhileLookUpsComeAndGo() {
    auto lookUp = IpHelper::Load();
    auto ping = APing::Create();
    lookUp.reset();
    std::atomic<bool> over = false;
    const auto lookUps = ZelBase::ModulePin::StartThread([&over] {
        while (!over) {
            IpHelper::Load();
        }
    });
    constexpr int kPings = 100;
    int answered = 0;
    for (int index = 0; ping && index < kPings; ++index) {
        IpAddress reply;
        std::uint32_t time = 0;
        answered += ping->Ping(LoopbackAddress(), reply, time, 5000, 128, 10) >= 0 ? 1 : 0;
        if (index % 2 == 0) {
            ping.reset();
            ping = APing::Create();
        }
    }
    over = true;
    return WaitForSingleObject(lookUps.Get(), kPatienceMs) == WAIT_OBJECT_0 && answered == kPings;
}

// In a process of its own, because other tests may leave the library loaded.
TEST(Ping, GoesOnWhileLookUpsComeAndGo) {
    if (!tervane::test::SystemCanPing()) {
        GTEST_SKIP() << "the system does not let programs ping";
    }
    EXPECT_EXIT(std::_Exit(PingsWhileLookUpsComeAndGo() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(RealPing, TakesTheFunctionsFromTheFirstLibraryThatHasThem) {
    EXPECT_FALSE(WIN32_IcmpLibrary::Load({"no such library.dll", "KERNEL32.DLL"}));
    const auto icmp = WIN32_IcmpLibrary::Load({"no such library.dll", "IPHLPAPI.DLL"});
    ASSERT_TRUE(icmp);
    char reply[256] = {};
    EXPECT_EQ(icmp->SendEcho(LoopbackAddress().GetValue(), "ping", 128, reply, 256, 5000), 1u);
}

using NamespacePingTest = NamespaceTest;

TEST_F(NamespacePingTest, FailsForAnAddressThatDoesNotAnswer) {
    const auto ping = APing::Create();
    ASSERT_TRUE(ping);
    IpAddress reply;
    std::uint32_t time = 0;
    const DWORD start = GetTickCount();
    EXPECT_LT(ping->Ping(IpAddress("10.55.0.9"), reply, time, 500, 128, 10), 0);
    EXPECT_GE(GetTickCount() - start, 450u);
    EXPECT_LT(GetTickCount() - start, 5000u);
    EXPECT_LT(ping->Ping(IpAddress("192.0.2.1"), reply, time, 500, 128, 10), 0); // no route
    EXPECT_GE(ping->Ping(IpAddress("10.55.0.1"), reply, time, 5000, 128, 10), 0);
}

} // namespace
} // namespace ZelNet
