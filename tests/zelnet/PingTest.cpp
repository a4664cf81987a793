#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/WIN32_Ping.h"
#include "tests/support/SystemPing.h"
#include "tests/support/TestThreads.h"
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
    const std::map<int, std::vector<std::uint32_t>> statuses = {
        {-4, {11013}},
        {-5, {11002, 11012}},
        {-6, {11003, 11004, 11005, 11018}},
        {-7, {1, 11001, 11006, 11009, 11011, 11014, 11017, 11019, 11050}},
        {-8, {11010}}};
    for (const auto& [result, alike] : statuses) {
        for (const std::uint32_t status : alike) {
            EXPECT_EQ(APing::Result(status, status % 2, 42), result) << status;
        }
    }
    EXPECT_EQ(APing::Result(0, 1, 42), 42);
    EXPECT_EQ(APing::Result(0, 0, 42), -6);
}

// Whether the loopback answers in time.
bool Reaches(APing* ping, std::int32_t size = 10) {
    IpAddress reply;
    std::uint32_t time = 12345;
    const int result = ping ? ping->Ping(LoopbackAddress(), reply, time, 20000, 128, size) : -1;
    EXPECT_TRUE(result < 0 || time == static_cast<std::uint32_t>(result));
    return result >= 0 && reply == LoopbackAddress();
}

class RealPing : public testing::Test {
protected:
    void SetUp() override {
        if (!tervane::test::SystemCanPing()) {
            GTEST_SKIP() << "the system does not let programs ping";
        }
    }
};

TEST_F(RealPing, LastsAsLongAsItsLastUser) {
    auto ping = APing::Create();
    auto other = APing::Create();
    EXPECT_TRUE(Reaches(ping.get(), 1400));
    ping.reset();
    EXPECT_TRUE(Reaches(other.get()));
    other.reset();
    EXPECT_TRUE(Reaches(APing::Create().get()));
}

TEST_F(RealPing, ManyAtOnce) {
    std::atomic<int> answered = 0;
    tervane::test::OnThreads(50, [&](int) { answered += Reaches(APing::Create().get()); });
    EXPECT_EQ(answered, 50);
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
        answered += Reaches(ping.get());
        if (index % 2 == 0) {
            ping.reset();
            ping = APing::Create();
        }
    }
    over = true;
    return WaitForSingleObject(lookUps.Get(), kPatienceMs) == WAIT_OBJECT_0 && answered == kPings;
}

// In a process of its own, because other tests may leave the library loaded.
TEST_F(RealPing, GoesOnWhileLookUpsComeAndGo) {
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
