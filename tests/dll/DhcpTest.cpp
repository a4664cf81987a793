// The DHCP object as scripts use it. A release would take this machine off its network, so that
// all but the empty run is done in a network namespace; what leases do is tested on made-up
// machines (tests/objects/connectivity/LeaseRenewalTest.cpp), because Wine can neither release nor
// renew.

#include "support/ObjectTest.h"

#include <cstdlib>

namespace tervane::test {
namespace {

class DhcpTest : public ObjectTest {
protected:
    explicit DhcpTest(const std::string& network) : ObjectTest(L"DHCP"), network_(network) {}

    void SetUp() override {
        const char* network = std::getenv("TERVANE_ADAPTERS");
        if (!network || network != network_) {
            GTEST_SKIP() << "run by tests/network/adapters.sh, in a network of its own";
        }
    }

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
    Answers({{L"ReleaseRenew"}, {L"ReleaseRenew"}});
    object_.Reset();
    EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
    EXPECT_EQ(L"1(0)", Event());
    EXPECT_EQ(L"1(0)", Event()); // both at the same time
    EXPECT_NE(GetCurrentThreadId(), sink_[0].thread);
    EXPECT_GE(GetTickCount64() - start_, 3 * 1000u + 200 + 3500);
    EXPECT_LT(GetTickCount64() - start_, 2 * (3 * 1000u + 200 + 3500));
}

class EmptyNetworkDhcpTest : public DhcpTest {
protected:
    EmptyNetworkDhcpTest() : DhcpTest("empty") {}
};

TEST_F(EmptyNetworkDhcpTest, TellsAtOnceThatThereIsNoCard) {
    Answers({{L"ReleaseRenew"}});
    EXPECT_EQ(L"1(0)", Event());
    EXPECT_LT(GetTickCount64() - start_, 4700u); // what a card takes
}

} // namespace
} // namespace tervane::test
