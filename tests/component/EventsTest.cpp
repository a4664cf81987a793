// Firing events: order, argument types, sinks that misbehave, and sinks that come and go while
// other threads fire.

#include "component/ConnectionPoint.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace tervane {
namespace {

using test::RecordingSink;

// A sink that does something of its own when it is called.
class ActingSink : public RecordingSink {
public:
    std::function<HRESULT()> action;

private:
    HRESULT OnEvent(DISPID) override { return action ? action() : S_OK; }
};

DWORD Add(SinkArray& sinks, IDispatch& sink) {
    return sinks.Add(AddReference(&sink));
}

TEST(Events, ArriveWithTheirArgumentsInDeclaredOrderAndFlagsAsNumbers) {
    SinkArray sinks;
    RecordingSink sink;
    Add(sinks, sink);
    const UniqueBstr text = MakeBstr(L"Grüße");
    EXPECT_EQ(S_OK, FireEvent(sinks, 7, {true, false, 41L, &sink, text}));
    ASSERT_EQ(1u, sink.Count());
    const std::vector<Variant>& arguments = sink[0].arguments;
    EXPECT_EQ(7, sink[0].id);
    ASSERT_EQ(5u, arguments.size());
    EXPECT_EQ(VT_I2, arguments[0].Type());
    EXPECT_EQ(-1, arguments[0].Get().iVal);
    EXPECT_EQ(VT_I2, arguments[1].Type());
    EXPECT_EQ(0, arguments[1].Get().iVal);
    EXPECT_EQ(VT_I4, arguments[2].Type());
    EXPECT_EQ(41, arguments[2].Get().lVal);
    EXPECT_EQ(VT_DISPATCH, arguments[3].Type());
    EXPECT_EQ(L"Grüße", arguments[4].Text());
}

TEST(Events, ReachEverySinkWhateverTheOthersDo) {
    SinkArray sinks;
    ActingSink failing;
    ActingSink throwing;
    RecordingSink last;
    failing.action = [] { return E_FAIL; };
    throwing.action = []() -> HRESULT { throw std::runtime_error("script"); };
    Add(sinks, failing);
    Add(sinks, throwing);
    const DWORD cookie = Add(sinks, last);
    EXPECT_EQ(S_OK, FireEvent(sinks, 1, {}));
    EXPECT_EQ(1u, failing.Count());
    EXPECT_EQ(1u, throwing.Count());
    EXPECT_EQ(1u, last.Count());
    EXPECT_TRUE(sinks.Remove(cookie));
    EXPECT_FALSE(sinks.Remove(cookie));
    EXPECT_FALSE(sinks.Remove(0));
    EXPECT_FALSE(sinks.Remove(1000));
    EXPECT_EQ(0, last.References());
    EXPECT_EQ(E_UNEXPECTED, FireEvent(sinks, 1, {}));
    EXPECT_EQ(1u, last.Count());
}

TEST(Events, SeeSinksThatChangeTheListWhileItIsWalked) {
    SinkArray sinks;
    ActingSink first;
    RecordingSink removed;
    RecordingSink added;
    const DWORD own = Add(sinks, first);
    const DWORD other = Add(sinks, removed);
    first.action = [&] {
        sinks.Remove(own);
        sinks.Remove(other);
        // Takes the first free slot, which this walk has passed, so it is called next time only.
        Add(sinks, added);
        return S_OK;
    };
    FireEvent(sinks, 1, {});
    EXPECT_EQ(0u, removed.Count());
    EXPECT_EQ(0u, added.Count());
    EXPECT_EQ(0, first.References());
    FireEvent(sinks, 1, {});
    EXPECT_EQ(1u, first.Count());
    EXPECT_EQ(1u, added.Count());
}

// A sink on the heap that must not be touched after its last reference is gone.
class MortalSink final : public RecordingSink {
public:
    ULONG STDMETHODCALLTYPE AddRef() override {
        EXPECT_FALSE(dead_);
        return ++count_;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = --count_;
        EXPECT_GE(left, 0);
        if (left == 0) {
            dead_ = true;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        EXPECT_FALSE(dead_);
        ++calls;
        return S_OK;
    }
    bool IsDead() const { return dead_; }

    std::atomic<int> calls = 0;

private:
    std::atomic<LONG> count_ = 0;
    std::atomic<bool> dead_ = false;
};

TEST(Events, NeverUseASinkThatIsGone) {
    constexpr int kSinks = 3000;
    SinkArray sinks;
    std::atomic<bool> stop = false;
    std::vector<test::TestThread> firing;
    for (int i = 0; i < 3; ++i) {
        firing.emplace_back([&] {
            while (!stop) {
                FireEvent(sinks, 1, {});
            }
        });
    }
    std::vector<std::unique_ptr<MortalSink>> all;
    int called = 0;
    for (int i = 0; i < kSinks; ++i) {
        all.push_back(std::make_unique<MortalSink>());
        const DWORD cookie = Add(sinks, *all.back());
        if (i % 16 == 0) {
            while (all.back()->calls == 0) { // a firing is under way at the removal
                SwitchToThread();
            }
            ++called;
        }
        ASSERT_TRUE(sinks.Remove(cookie));
    }
    stop = true;
    for (test::TestThread& thread : firing) {
        thread.join();
    }
    FireEvent(sinks, 1, {}); // whoever reads last empties the list of the removed
    for (const auto& sink : all) {
        EXPECT_TRUE(sink->IsDead());
    }
    EXPECT_EQ((kSinks + 15) / 16, called);
}

TEST(Events, GrowWithoutMovingWhatIsThere) {
    std::vector<std::unique_ptr<RecordingSink>> all;
    {
        SinkArray sinks;
        for (int i = 0; i < 100; ++i) {
            all.push_back(std::make_unique<RecordingSink>());
            EXPECT_EQ(static_cast<DWORD>(i + 1), Add(sinks, *all.back()));
        }
        EXPECT_TRUE(sinks.Remove(50));
        EXPECT_EQ(50u, Add(sinks, *all[49]));
        EXPECT_EQ(100u, sinks.Size());
        FireEvent(sinks, 1, {});
    }
    for (const auto& sink : all) {
        EXPECT_EQ(1u, sink->Count());
        EXPECT_EQ(0, sink->References());
    }
}

} // namespace
} // namespace tervane
