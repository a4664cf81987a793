// The requests of AdapterInfo: their numbers, their table, and their end, with lists that the test
// gathers in every way that can go wrong.

#include "objects/sysinfo/AdapterRequests.h"
#include "objects/sysinfo/AdapterGathering.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

namespace tervane {
namespace {

using Found = AdapterRequests::Found;
using List = std::optional<std::vector<Variant>>;

TEST(RequestIds, AreTheCallersBelowAThousandAndElseDrawn) {
    RequestIds ids;
    const struct {
        long wanted;
        long id;
    } cases[] = {{-1, 1001},       {1, 1},           {999, 999}, {0, 1002},   {1000, 1003},
                 {LONG_MAX, 1004}, {LONG_MIN, 1005}, {999, 999}, {5000, 1006}};
    for (const auto& row : cases) {
        EXPECT_EQ(ids.Choose(row.wanted), row.id) << row.wanted;
    }
    RequestIds last(2147482999);
    for (const long id : {2147482999L, 2147483000L, 1000L, 1001L}) {
        EXPECT_EQ(last.Choose(-1), id);
    }
}

TEST(AdapterInterfaces, AreNotGatheredForAnObjectThatGoes) {
    for (const bool stop : {false, true}) {
        EXPECT_EQ(!stop, GatherAdapters(IID_IStaticAdapterInfo2, stop).has_value());
        EXPECT_EQ(!stop, GatherAdapters(IID_ILiveAdapterInfo, stop).has_value());
    }
}

class AdapterRequestsTest : public testing::Test {
protected:
    ~AdapterRequestsTest() override { requests_->Close(); }

    List OneObject() {
        std::vector<Variant> list;
        list.push_back(Variant::FromObject(AddReference<IDispatch>(&object_)));
        return list;
    }
    // Waits until the request has been reported.
    bool Await(int reports) {
        const DWORD start = GetTickCount();
        while (reports_ < reports && GetTickCount() - start < 10000) {
            Sleep(2);
        }
        return reports_ == reports;
    }
    std::size_t Length(long id) {
        Variant copy;
        EXPECT_EQ(Found::kYes, requests_->Find(id, copy)) << id;
        EXPECT_EQ(VT_ARRAY | VT_VARIANT, copy.Type());
        return ReadArray(copy.Get()).value().size();
    }

    test::RecordingSink object_; // counts its references
    std::atomic<int> reports_ = 0;
    std::atomic<int> gathered_ = 0;
    AdapterRequests::Report onReport_;
    std::shared_ptr<AdapterRequests> requests_ =
        std::make_shared<AdapterRequests>([this](long id, bool gathered) {
            gathered_ += gathered;
            ++reports_;
            if (onReport_) {
                onReport_(id, gathered);
            }
        });
};

TEST_F(AdapterRequestsTest, GivesCopiesThatLiveOnTheirOwn) {
    Variant copy;
    EXPECT_EQ(Found::kNo, requests_->Find(7, copy));
    ASSERT_TRUE(requests_->Start(7, [&](auto&) { return OneObject(); }));
    ASSERT_TRUE(Await(1));
    EXPECT_EQ(1, gathered_);
    EXPECT_EQ(1, object_.References());
    ASSERT_EQ(Found::kYes, requests_->Find(7, copy));
    Variant second;
    ASSERT_EQ(Found::kYes, requests_->Find(7, second));
    EXPECT_NE(copy.Get().parray, second.Get().parray);
    EXPECT_EQ(3, object_.References());
    requests_->Close();
    EXPECT_EQ(2, object_.References());
    EXPECT_EQ(Found::kNo, requests_->Find(7, second));
    EXPECT_EQ(static_cast<IDispatch*>(&object_),
              ReadArray(copy.Get()).value().at(0).Get().pdispVal);
}

TEST_F(AdapterRequestsTest, LeavesAnEmptyListWhereNoneCanBeGathered) {
    const AdapterRequests::Gather failures[] = {
        [](auto&) { return std::nullopt; },
        [](auto&) -> List { throw std::bad_alloc(); },
        [](auto&) -> List { throw 5; },
    };
    long id = 0;
    for (const auto& gather : failures) {
        requests_->Start(++id, gather);
        ASSERT_TRUE(Await(static_cast<int>(id)));
        EXPECT_EQ(0u, Length(id));
    }
    EXPECT_EQ(0, gathered_);
}

TEST_F(AdapterRequestsTest, KeepsTheLatestListOfANumberThatIsUsedAgain) {
    ZelBase::UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    requests_->Start(3, [&](auto&) { return OneObject(); });
    ASSERT_TRUE(Await(1));
    requests_->Start(3, [&](auto&) -> List {
        WaitForSingleObject(go.Get(), INFINITE);
        return std::nullopt;
    });
    requests_->Start(3, [&](auto&) -> List {
        auto list = OneObject();
        list->push_back(Variant::FromLong(1));
        return list;
    });
    ASSERT_TRUE(Await(2));
    EXPECT_EQ(2u, Length(3));
    SetEvent(go.Get());
    ASSERT_TRUE(Await(3));
    EXPECT_EQ(0u, Length(3));
    // A thread gives the list that it replaced back after its report.
    requests_->Close();
    EXPECT_EQ(0, object_.References());
}

TEST_F(AdapterRequestsTest, ManyAtOnceEachHaveTheirList) {
    constexpr int kRequests = 200;
    test::TestThread reader([&] {
        Variant copy;
        while (reports_ < kRequests) {
            requests_->Find(reports_, copy);
        }
    });
    for (int id = 1; id <= kRequests; ++id) {
        ASSERT_TRUE(requests_->Start(id, [id](auto&) -> List {
            std::vector<Variant> list(static_cast<std::size_t>(id));
            return list;
        }));
    }
    EXPECT_TRUE(Await(kRequests));
    reports_ = kRequests;
    reader.join();
    for (int id = 1; id <= kRequests; ++id) {
        EXPECT_EQ(static_cast<std::size_t>(id), Length(id));
    }
}

TEST_F(AdapterRequestsTest, EndsTenRunningRequestsWithoutTheirReports) {
    std::atomic<int> running = 0;
    for (int id = 1; id <= 10; ++id) {
        requests_->Start(id, [&](const std::atomic<bool>& stop) {
            ++running;
            while (!stop) {
                Sleep(1);
            }
            --running;
            return OneObject();
        });
    }
    while (running < 10) {
        Sleep(1);
    }
    const DWORD start = GetTickCount();
    requests_->Close();
    EXPECT_LT(GetTickCount() - start, AdapterRequests::kThreadPatienceMs);
    EXPECT_EQ(0, running);
    EXPECT_EQ(0, reports_);
    EXPECT_EQ(0, object_.References());
}

// A report that never returns stands for a thread that is killed with the lock in hand.
TEST_F(AdapterRequestsTest, KillsAThreadThatIsStuckAndGetsItsLock) {
    onReport_ = [](long, bool) { Sleep(INFINITE); };
    requests_->Start(1, [&](auto&) { return OneObject(); });
    requests_->Start(2, [](auto&) -> List {
        Sleep(INFINITE);
        return std::nullopt;
    });
    ASSERT_TRUE(Await(1));
    Variant copy;
    DWORD start = GetTickCount();
    EXPECT_EQ(Found::kLocked, requests_->Find(1, copy));
    EXPECT_EQ(VT_EMPTY, copy.Type());
    EXPECT_GE(GetTickCount() - start, AdapterRequests::kScriptPatienceMs - 50);
    start = GetTickCount();
    requests_->Close();
    EXPECT_GE(GetTickCount() - start, 2 * AdapterRequests::kThreadPatienceMs - 50);
    EXPECT_LT(GetTickCount() - start, 2 * AdapterRequests::kThreadPatienceMs + 3000);
    EXPECT_EQ(Found::kNo, requests_->Find(1, copy));
    EXPECT_EQ(0, object_.References());
}

} // namespace
} // namespace tervane
