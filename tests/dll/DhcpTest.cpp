// The DHCP object as scripts use it. A release would take this machine off its network, so that
// all but the empty run is done in a network namespace; what leases do is tested on made-up
// machines (tests/objects/connectivity/LeaseRenewalTest.cpp), because Wine can neither release nor
// renew.

#include "support/ObjectTest.h"

#include <cstdlib>

namespace tervane::test {
namespace {

// In the networks of tests/network/adapters.sh, which chooses by the name.
class DhcpTest : public ObjectTest {
protected:
    DhcpTest() : ObjectTest(L"DHCP") {}

    void SetUp() override {
        if (!std::getenv("TERVANE_NAMESPACE")) {
            GTEST_SKIP() << "run by tests/network/adapters.sh, in a network of its own";
        }
    }

    const ULONGLONG start_ = GetTickCount64();
};

// Two cards keep their addresses, one never had one, and the fourth counts as dial-up.
TEST_F(DhcpTest, InAFullNetworkTakesItsTimeForEachCardAndOutlivesTheScript) {
    Answers({{L"ReleaseRenew"}, {L"ReleaseRenew"}});
    object_.Reset();
    EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
    EXPECT_EQ(L"1(0)", Event());
    EXPECT_EQ(L"1(0)", Event()); // both at the same time
    EXPECT_NE(GetCurrentThreadId(), sink_[0].thread);
    EXPECT_GE(GetTickCount64() - start_, 3 * 1000u + 200 + 3500);
    EXPECT_LT(GetTickCount64() - start_, 2 * (3 * 1000u + 200 + 3500));
}

TEST_F(DhcpTest, InAnEmptyNetworkTellsAtOnceThatThereIsNoCard) {
    Answers({{L"ReleaseRenew"}});
    EXPECT_EQ(L"1(0)", Event());
    EXPECT_LT(GetTickCount64() - start_, 4700u); // what a card takes
}

} // namespace
} // namespace tervane::test
