// The DHCP object as scripts use it. A release would take this machine off its network, so that
// all but the empty run is done in a network namespace; what leases do is tested on made-up
// machines (tests/objects/connectivity/LeaseRenewalTest.cpp), because Wine can neither release nor
// renew.

#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tervane::test {
namespace {

constexpr DWORD kPatience = 60000; // ms

class DhcpTest : public testing::Test {
protected:
    explicit DhcpTest(const std::string& network) : network_(network) {}

    void SetUp() override {
        const char* network = std::getenv("TERVANE_ADAPTERS");
        if (!network || network != network_) {
            GTEST_SKIP() << "run by tests/network/adapters.sh, in a network of its own";
        }
    }
    void ExpectEvents(size_t count, int adapters) {
        ASSERT_TRUE(sink_.WaitFor(count, kPatience));
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(1, sink_[i].id);
            EXPECT_EQ(VT_I4, sink_[i].arguments.at(0).Type());
            EXPECT_EQ(adapters, sink_[i].arguments.at(0).Get().lVal);
            EXPECT_NE(GetCurrentThreadId(), sink_[i].thread);
        }
    }

    const Apartment apartment_;
    ComPtr<IDispatch> object_ = TestComponent::Get().Create(__uuidof(::DHCP));
    RecordingSink sink_;
    const ULONGLONG start_ = GetTickCount64();

private:
    const std::string network_;
};

class FullNetworkDhcpTest : public DhcpTest {
protected:
    FullNetworkDhcpTest() : DhcpTest("full") {}
};

// Two cards keep their addresses, one never had one, and the fourth counts as dial-up.
TEST_F(FullNetworkDhcpTest, TakesItsTimeForEachCardAndOutlivesTheScript) {
    Advise(object_.Get(), &sink_);
    EXPECT_EQ(S_OK, Call(object_.Get(), L"ReleaseRenew").status);
    EXPECT_EQ(S_OK, Call(object_.Get(), L"ReleaseRenew").status);
    object_.Reset();
    EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
    ExpectEvents(2, 0); // both at the same time
    EXPECT_GE(GetTickCount64() - start_, 3 * 1000u + 200 + 3500);
    EXPECT_LT(GetTickCount64() - start_, 2 * (3 * 1000u + 200 + 3500));
    EXPECT_TRUE(PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    EXPECT_EQ(0, sink_.References());
}

class EmptyNetworkDhcpTest : public DhcpTest {
protected:
    EmptyNetworkDhcpTest() : DhcpTest("empty") {}
};

TEST_F(EmptyNetworkDhcpTest, TellsAtOnceThatThereIsNoCard) {
    const DWORD cookie = Advise(object_.Get(), &sink_);
    EXPECT_EQ(S_OK, Call(object_.Get(), L"ReleaseRenew").status);
    ExpectEvents(1, 0);
    EXPECT_LT(GetTickCount64() - start_, 4700u); // what a card takes
    Unadvise(object_.Get(), cookie);
}

} // namespace
} // namespace tervane::test
