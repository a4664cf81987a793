// Wait threads: how they end by themselves, by an abort, and with their owner, wherever it ends.

#include "objects/config/windows/WaitTable.h"
#include "ZelBase/Handles.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <utility>
#include <vector>

namespace tervane {
namespace {

constexpr DWORD kLong = 20000; // milliseconds; nothing here takes that long

// What the waits have reported, in their order.
class Reports {
public:
    void Add(LONG id, WaitResult result) {
        const std::lock_guard lock(mutex_);
        all_.emplace_back(id, result);
        ReleaseSemaphore(arrived_.Get(), 1, nullptr);
    }
    bool WaitForOne() { return WaitForSingleObject(arrived_.Get(), kLong) == WAIT_OBJECT_0; }
    std::vector<std::pair<LONG, WaitResult>> All() {
        const std::lock_guard lock(mutex_);
        return all_;
    }

private:
    test::TestMutex mutex_;
    std::vector<std::pair<LONG, WaitResult>> all_;
    ZelBase::UniqueHandle arrived_{CreateSemaphoreW(nullptr, 0, 100000, nullptr)};
};
using All = std::vector<std::pair<LONG, WaitResult>>;

class TestTask final : public WaitTask {
public:
    using Body = std::function<std::optional<WaitResult>(HANDLE abort)>;
    using AtReport = std::function<void()>;

    TestTask(Reports& reports, Body body, AtReport atReport = nullptr)
        : reports_(reports), body_(std::move(body)), atReport_(std::move(atReport)) {}
    std::optional<WaitResult> Wait(HANDLE abort) override { return body_(abort); }
    void Report(LONG id, WaitResult result) noexcept override {
        if (atReport_) {
            atReport_();
        }
        reports_.Add(id, result);
    }

private:
    Reports& reports_;
    Body body_;
    AtReport atReport_;
};

std::optional<WaitResult> UntilAborted(HANDLE abort) {
    WaitForSingleObject(abort, INFINITE);
    return std::nullopt;
}

std::optional<WaitResult> MetAtOnce(HANDLE) {
    return WaitResult::kMet;
}

template <typename... Arguments>
LONG Start(WaitTable& table, Arguments&&... arguments) {
    return table.Start(std::make_unique<TestTask>(std::forward<Arguments>(arguments)...));
}

TEST(WaitTable, NumbersWaitsAndPassesOnHowTheyEnded) {
    Reports reports;
    const auto table = std::make_shared<WaitTable>();
    EXPECT_EQ(1, Start(*table, reports, &MetAtOnce));
    ASSERT_TRUE(reports.WaitForOne());
    EXPECT_EQ(2, Start(*table, reports, [](HANDLE) { return WaitResult::kTimedOut; }));
    ASSERT_TRUE(reports.WaitForOne());
    // Out of memory, say: the condition was not seen to be met.
    EXPECT_EQ(3, Start(*table, reports,
                       [](HANDLE) -> std::optional<WaitResult> { throw std::bad_alloc(); }));
    ASSERT_TRUE(reports.WaitForOne());
    table->Close();
    EXPECT_EQ((All{{1, WaitResult::kMet}, {2, WaitResult::kTimedOut}, {3, WaitResult::kTimedOut}}),
              reports.All());
    EXPECT_EQ(0, Start(*table, reports, &MetAtOnce));
}

TEST(WaitTable, EndsRunningWaitsInSilenceWithTheirOwner) {
    Reports reports;
    const auto table = std::make_shared<WaitTable>();
    for (int i = 0; i < 20; ++i) {
        Start(*table, reports, &UntilAborted);
        Start(*table, reports, [](HANDLE abort) {
            WaitForSingleObject(abort, INFINITE);
            return WaitResult::kMet; // too late
        });
    }
    table->Abort(1);
    ASSERT_TRUE(reports.WaitForOne());
    table->Close();
    EXPECT_EQ((All{{1, WaitResult::kAborted}}), reports.All());
    EXPECT_EQ(1, table.use_count());
}

TEST(WaitTable, CanEndOnAWaitThread) {
    Reports reports;
    auto table = std::make_shared<WaitTable>();
    Start(*table, reports, &UntilAborted);
    std::weak_ptr<WaitTable> alive = table;
    Start(*table, reports, &MetAtOnce, [&] {
        table->Close();
        table.reset();
    });
    ASSERT_TRUE(reports.WaitForOne());
    EXPECT_EQ((All{{2, WaitResult::kMet}}), reports.All());
    for (DWORD waited = 0; !alive.expired() && waited < kLong; waited += 10) {
        Sleep(10);
    }
    EXPECT_TRUE(alive.expired());
}

TEST(WaitTable, EndsWhileAReportWaitsForTheClosingThread) {
    Reports reports;
    const auto table = std::make_shared<WaitTable>();
    HWND window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    const ZelBase::UniqueHandle reporting(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    Start(*table, reports, &MetAtOnce, [&] {
        SetEvent(reporting.Get());
        SendMessageW(window, WM_NULL, 0, 0);
    });
    WaitForSingleObject(reporting.Get(), kLong);
    const DWORD start = GetTickCount();
    table->Close();
    EXPECT_LT(GetTickCount() - start, kLong);
    EXPECT_EQ((All{{1, WaitResult::kMet}}), reports.All());
    DestroyWindow(window);
}

} // namespace
} // namespace tervane
