// Firing events: order, argument types, sinks that misbehave, and sinks that come and go while
// other threads fire.

#include "ZelBase/threads/ModulePin.h"
#include "component/AdvisingThread.h"
#include "component/ConnectionPoint.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace tervane {
namespace {

using test::RecordingSink;

DWORD Add(SinkArray& sinks, IDispatch& sink) {
    return sinks.Add(AddReference(&sink));
}

TEST(Events, ArriveWithTheirArgumentsInDeclaredOrderAndFlagsAsNumbers) {
    RecordingSink sink;
    SinkArray sinks;
    Add(sinks, sink);
    const UniqueBstr text = MakeBstr(L"Grüße");
    EXPECT_EQ(S_OK, FireEvent(sinks, 7, {true, false, 41L, &sink, text}));
    ASSERT_EQ(1u, sink.Count());
    EXPECT_EQ(L"7(-1s, 0s, 41, object, Grüße)", sink.Text(0));
    sink.Forget();
}

TEST(Events, ReachEverySinkWhateverTheOthersDo) {
    RecordingSink failing;
    RecordingSink throwing;
    RecordingSink last;
    SinkArray sinks;
    failing.onEvent = [](DISPID) { return E_FAIL; };
    throwing.onEvent = [](DISPID) -> HRESULT { throw std::runtime_error("script"); };
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
    RecordingSink first;
    RecordingSink removed;
    RecordingSink added;
    SinkArray sinks;
    const DWORD own = Add(sinks, first);
    const DWORD other = Add(sinks, removed);
    first.onEvent = [&](DISPID) {
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
    MortalSink always; // keeps what there is once for the advising thread
    SinkArray sinks;
    Add(sinks, always);
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

// As a script engine's: it takes calls on its own thread only, and notes which those are.
class EngineSink final : public RecordingSink {
public:
    explicit EngineSink(HRESULT refusal = RPC_E_WRONG_THREAD) {
        onEvent = [this, refusal, home = GetCurrentThreadId()](DISPID event) {
            if (GetCurrentThreadId() != home) {
                return refusal;
            }
            taken.push_back(event);
            if (handler) {
                handler();
            }
            return S_OK;
        };
    }

    std::vector<DISPID> taken;
    std::function<void()> handler;
};

void OnAnotherThread(const std::function<void()>& body) {
    const ZelBase::UniqueHandle thread = ZelBase::ModulePin::StartThread([&] { body(); });
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread.Get(), 20000));
}

// Whatever is on its way has come.
void DispatchAll() {
    test::PumpUntil([] { return false; }, 50);
}

HWND EventWindow() {
    return FindWindowExA(HWND_MESSAGE, nullptr, "TervaneEvents", nullptr);
}

TEST(RefusedEvents, ComeOnceMoreOnTheThreadThatAdvised) {
    struct {
        HRESULT answer;
        bool again;
    } const rows[] = {{RPC_E_WRONG_THREAD, true},
                      {E_UNEXPECTED, true},
                      {E_FAIL, false},
                      {RPC_E_DISCONNECTED, false},
                      {S_OK, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer);
        RecordingSink object;
        EngineSink sink(row.answer);
        SinkArray sinks;
        Add(sinks, sink);
        EXPECT_NE(nullptr, EventWindow());
        OnAnotherThread([&] {
            const UniqueBstr text = MakeBstr(L"text");
            EXPECT_EQ(row.answer, FireEvent(sinks, 3, {true, text, &object}));
        });
        EXPECT_EQ(row.again ? 2 : 1, object.References()) << "one in the recorded event";
        DispatchAll();
        ASSERT_EQ(row.again ? 2u : 1u, sink.Count());
        EXPECT_EQ(row.again ? 1u : 0u, sink.taken.size());
        EXPECT_EQ(L"3(-1s, text, object)", sink.Text(sink.Count() - 1));
        EXPECT_EQ(static_cast<LONG>(sink.Count()), object.References());
    }
    EXPECT_EQ(nullptr, EventWindow());
}

TEST(RefusedEvents, KeepTheirOrderAndHoldNobodyUp) {
    EngineSink engine;
    RecordingSink ordinary;
    SinkArray sinks;
    Add(sinks, engine);
    Add(sinks, ordinary);
    // A handler that dispatches messages lets the next one in, but not all of them.
    int depth = 0;
    int deepest = 0;
    engine.handler = [&] {
        deepest = std::max(deepest, ++depth);
        test::PumpUntil([] { return false; }, 1);
        --depth;
    };
    std::vector<DISPID> expected;
    OnAnotherThread([&] {
        for (DISPID event = 1; event <= 40; ++event) {
            FireEvent(sinks, event, {});
            expected.push_back(event);
        }
    });
    EXPECT_EQ(40u, ordinary.Count());
    FireEvent(sinks, 41, {}); // on the engine's own thread, yet behind the others
    expected.push_back(41);
    EXPECT_TRUE(engine.taken.empty());
    test::PumpUntil([&] { return engine.taken.size() == 41 && depth == 0; }, 20000);
    EXPECT_EQ(expected, engine.taken);
    EXPECT_EQ(16, deepest);
    FireEvent(sinks, 42, {});
    EXPECT_EQ(42u, engine.taken.size()) << "nothing waits: called at once";
    EXPECT_EQ(43u, engine.Count()) << "only the first was tried elsewhere";
}

TEST(RefusedEvents, OfAnExceptionOrOfTheOwnThreadAreNotRepeated) {
    RecordingSink sink;
    SinkArray sinks;
    Add(sinks, sink);
    sink.onEvent = [](DISPID) { return E_UNEXPECTED; };
    EXPECT_EQ(E_UNEXPECTED, FireEvent(sinks, 1, {}));
    sink.onEvent = [](DISPID) -> HRESULT { throw std::runtime_error("script"); };
    OnAnotherThread([&] { FireEvent(sinks, 2, {}); });
    DispatchAll();
    EXPECT_EQ(2u, sink.Count());
}

TEST(RefusedEvents, GoWithTheConnectionAndNotWithTheObject) {
    EngineSink kept;
    EngineSink unadvised;
    {
        SinkArray sinks;
        Add(sinks, kept);
        const DWORD cookie = Add(sinks, unadvised);
        OnAnotherThread([&] { FireEvent(sinks, 1, {}); });
        EXPECT_TRUE(sinks.Remove(cookie));
        EXPECT_EQ(0, unadvised.References());
    }
    EXPECT_EQ(1, kept.References());
    DispatchAll();
    EXPECT_EQ(1u, kept.taken.size());
    EXPECT_EQ(0, kept.References());
    EXPECT_TRUE(unadvised.taken.empty());
    EXPECT_EQ(nullptr, EventWindow());
}

TEST(RefusedEvents, GoWithTheThreadThatAdvised) {
    RecordingSink argument;
    RecordingSink sink;
    sink.onEvent = [](DISPID) { return RPC_E_WRONG_THREAD; };
    SinkArray sinks;
    const auto fire = [&] { FireEvent(sinks, 1, {&argument}); };
    OnAnotherThread([&] {
        Add(sinks, sink);
        OnAnotherThread(fire);
    });
    EXPECT_EQ(2, argument.References());
    AdvisingThread::ForgetEnded();
    EXPECT_EQ(1, argument.References());
    fire(); // as ever, and nothing is kept of it
    EXPECT_EQ(2u, sink.Count());
    EXPECT_EQ(2, argument.References());
}

} // namespace
} // namespace tervane
