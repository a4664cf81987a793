#include "ZelBase/threads/Thread.h"
#include "ZelBase/threads/Event.h"
#include "ZelBase/threads/Mutex.h"
#include "tests/support/ProcessUsage.h"
#include "tests/zelbase/log/RingView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <sstream>
#include <stdexcept>

namespace ZelBase::test {
namespace {

using Function = Thread::Function;

std::unique_ptr<Thread> Started(Function function) {
    auto thread = Thread::Create();
    EXPECT_TRUE(thread->SetThreadFunction(std::move(function)));
    EXPECT_TRUE(thread->Execute());
    return thread;
}

template <typename Condition>
bool WaitUntil(Condition condition) {
    for (int i = 0; i < 2000 && !condition(); ++i) {
        ::Sleep(5);
    }
    return condition();
}

// Keeps the thread where no wait of the library can reach it.
std::uint32_t Spin(Thread*, std::uint32_t) {
    for (;;) {
        ::Sleep(1);
    }
}

TEST(Thread, RunsItsRoutineAgainAndAgain) {
    const auto thread = Thread::Create();
    ASSERT_TRUE(thread && thread->IsValid());
    EXPECT_FALSE(thread->Execute()); // no routine
    EXPECT_FALSE(thread->IsRunning() || thread->IsFinished() || thread->IsSuspended());
    EXPECT_EQ(thread->GetExitCode(), 0u);
    const auto go = Event::Create();
    EXPECT_TRUE(thread->SetThreadFunction([&](Thread* self, std::uint32_t argument) {
        EXPECT_EQ(self, thread.get());
        go->Wait(self);
        return argument + 1;
    }));
    for (const std::uint32_t argument : {1u, 0xFFFFFFFEu}) {
        go->Reset();
        EXPECT_TRUE(thread->SetArgument(argument));
        ASSERT_TRUE(thread->Execute());
        EXPECT_FALSE(thread->Execute() || thread->SetArgument(5) ||
                     thread->SetThreadFunction(Spin));
        EXPECT_TRUE(thread->IsRunning() && !thread->IsFinished());
        go->Set();
        ASSERT_TRUE(WaitUntil([&] { return thread->IsFinished(); }));
        EXPECT_FALSE(thread->IsRunning());
        EXPECT_EQ(thread->GetExitCode(), argument + 1);
    }
}

// Names come in their order; those that nobody took before the end are left. All of it is traced.
TEST(Thread, TakesNamedEvents) {
    std::string got;
    const auto ready = Event::Create();
    const auto thread = Thread::Create();
    RingView ring;
    EXPECT_FALSE(thread->Execute() || thread->SignalEvent("too early") || thread->HasEvents());
    thread->SetThreadFunction([&](Thread* self, std::uint32_t) -> std::uint32_t {
        std::string name = "unchanged";
        EXPECT_FALSE(self->WaitForEvent(name, 20));
        EXPECT_EQ(name, "unchanged");
        ready->Set();
        for (int i = 0; i < 4; ++i) {
            EXPECT_TRUE(i % 2 ? self->WaitForEvent(name) : self->WaitForEvent(name, 10000));
            got += name;
        }
        EXPECT_FALSE(self->HasEvents());
        ready->Reset();
        try {
            self->Sleep(kInfinite);
        } catch (const ThreadTerminateException&) {
            self->WaitForEvent(name, 60000); // throws although names are left
        }
        return 1;
    });
    ASSERT_TRUE(thread->Execute());
    ASSERT_TRUE(ready->Wait(10000, nullptr));
    for (const char* name : {"a", "b", "c", "100%d"}) {
        EXPECT_TRUE(thread->SignalEvent(name));
    }
    EXPECT_FALSE(thread->GetEvent("a")); // not while running
    ASSERT_TRUE(WaitUntil([&] { return !ready->Wait(0, nullptr); }));
    EXPECT_EQ(got, "abc100%d");
    for (const char* name : {"x", "y", "x"}) {
        EXPECT_TRUE(thread->SignalEvent(name));
    }
    EXPECT_TRUE(thread->Terminate(false));
    EXPECT_EQ(thread->GetExitCode(), 0u);
    for (const auto& [name, isLeft] :
         {std::pair("z", false), {"y", true}, {"y", false}, {"x", true}}) {
        EXPECT_EQ(thread->GetEvent(name), isLeft) << name;
    }
    EXPECT_TRUE(thread->HasEvents());
    EXPECT_TRUE(thread->GetEvent("x"));
    EXPECT_FALSE(thread->HasEvents() || thread->SignalEvent("x"));
    std::istringstream expected(
        R"(Execute1 Could not start thread because it is already running or is not valid.
           Execute3 Started thread Executing.
           ThreadWrapper3 Started thread Executing.
           WaitForEvent3 Waiting for Event.
           WaitForEvent3 Wait for an Event for 20lms.
           WaitForEvent3 Event did not occur in 20lms.
           SignalEvent3 100%d was signaled.
           WaitForEvent3 Found Event 100%d.
           Terminate3 Terminating thread.
           WaitForEvent3 Terminating thread becuase of terminate or empty queue.
           ThreadWrapper0 Uncaught Exception Thread Termination Exception.
           ThreadWrapper3 Thread has terminated with a code of 0.
           GetEvent3 Event is not present.)");
    const auto records = ring.RecordsOf("Thread");
    for (std::string text; std::getline(expected >> std::ws, text);) {
        EXPECT_TRUE(std::ranges::any_of(records, [&](const RingRecord& record) {
            return record.function + std::to_string(record.level) + " " + record.text == text;
        })) << text;
    }
}

// Says whether the routine was unwound, rather than killed.
struct Unwound {
    std::atomic<bool>& flag;
    ~Unwound() { flag = true; }
};

TEST(Thread, EndsFromEveryWaitThatKnowsIt) {
    const auto event = Event::Create();
    const auto mutex = Mutex::Create();
    mutex->Lock(nullptr);
    std::string name;
    const std::function<void(Thread*)> waits[] = {
        [](Thread* self) { self->Sleep(kInfinite); },
        [&](Thread* self) { self->WaitForEvent(name); },
        [&](Thread* self) { self->WaitForEvent(name, kInfinite); },
        [&](Thread* self) { event->Wait(self); },
        [&](Thread* self) { event->Wait(60000, self); },
        [&](Thread* self) { mutex->Lock(self); },
        [&](Thread* self) { static_cast<void>(mutex->Lock(60000, self)); },
        [](Thread* self) {
            EXPECT_TRUE(self->Terminate(false)); // it may tell itself
            self->Sleep(kInfinite);
        },
    };
    for (const auto& wait : waits) {
        std::atomic<bool> unwound = false;
        const Function function = [&](Thread* self, std::uint32_t) -> std::uint32_t {
            const Unwound guard{unwound};
            wait(self);
            return 1;
        };
        auto thread = Started(function);
        ::Sleep(20);
        EXPECT_TRUE(thread->Terminate(false));
        EXPECT_TRUE(thread->IsFinished() && !thread->IsRunning());
        EXPECT_EQ(thread->GetExitCode(), 0u);
        EXPECT_TRUE(unwound) << &wait - waits;
        // The destructor gives it 10 ms, which may pass in vain on a busy machine, but not always.
        unwound = false;
        for (int i = 0; i < 20 && !unwound; ++i) {
            thread = Started(function);
            ::Sleep(20);
            thread.reset();
        }
        EXPECT_TRUE(unwound) << "by destruction " << &wait - waits;
    }
    mutex->Unlock();
}

TEST(Thread, IsKilledWhenItDoesNotListen) {
    const auto thread = Started(Spin);
    EXPECT_FALSE(thread->Terminate(true));
    EXPECT_EQ(thread->GetExitCode(), Thread::kKilledExitCode);
    EXPECT_TRUE(thread->IsFinished() && !thread->IsRunning());
    thread->SetTerminateTimeout(30);
    ASSERT_TRUE(thread->Execute());
    const DWORD start = GetTickCount();
    EXPECT_FALSE(thread->Terminate(false));
    EXPECT_GE(GetTickCount() - start, 25u);
    thread->SetTerminateTimeout(kInfinite);
    const Function functions[] = {
        [](Thread*, std::uint32_t) -> std::uint32_t { return 6; },
        [](Thread*, std::uint32_t) -> std::uint32_t { throw std::runtime_error("escaped"); },
        [](Thread*, std::uint32_t) -> std::uint32_t { throw ThreadTerminateException(); },
    };
    for (const Function& function : functions) {
        thread->SetThreadFunction(function);
        ASSERT_TRUE(thread->Execute());
        EXPECT_TRUE(thread->Terminate(false));
        EXPECT_EQ(thread->GetExitCode(), 6u); // of the run that returned
    }
}

TEST(Thread, StopsWhileSuspendedAndCanStillBeEnded) {
    std::atomic<int> turns = 0;
    const auto thread = Started([&](Thread* self, std::uint32_t) -> std::uint32_t {
        for (;;) {
            ++turns;
            self->Sleep(1);
        }
    });
    EXPECT_TRUE(thread->Suspend());
    EXPECT_TRUE(thread->IsSuspended());
    ::Sleep(30);
    const int before = turns;
    ::Sleep(60);
    EXPECT_EQ(turns, before);
    EXPECT_TRUE(thread->Resume());
    EXPECT_FALSE(thread->IsSuspended());
    EXPECT_TRUE(WaitUntil([&] { return turns > before; }));
    for (const bool resumed : {false, true}) { // however often it was halted
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(thread->Suspend());
        }
        EXPECT_TRUE(!resumed || thread->Resume());
        EXPECT_TRUE(thread->Terminate(false));
        EXPECT_FALSE(thread->IsSuspended());
        EXPECT_TRUE(thread->Suspend()); // which means nothing to the next run
        ASSERT_TRUE(thread->Execute());
        EXPECT_FALSE(thread->IsSuspended());
        const int atStart = turns;
        EXPECT_TRUE(WaitUntil([&] { return turns > atStart; }));
    }
    EXPECT_TRUE(thread->Terminate(false));
}

TEST(Thread, GivesBackWhatThousandsOfRunsTook) {
    std::atomic<int> runs = 0;
    const auto round = [&](int times) {
        const auto thread = Started([&](Thread*, std::uint32_t) -> std::uint32_t {
            ++runs;
            return 0;
        });
        for (int i = 1; i < times; ++i) {
            while (thread->IsRunning()) {
                ::Sleep(0);
            }
            ASSERT_TRUE(thread->Execute());
        }
        EXPECT_TRUE(thread->Terminate(false));
    };
    round(10);
    const std::size_t before = tervane::test::OpenHandleCount();
    round(1990);
    EXPECT_EQ(tervane::test::OpenHandleCount(), before);
    EXPECT_EQ(runs, 2000);
}

// Signals, terminations and new starts from all sides: nobody hangs, and each call that says so has
// ended the run.
TEST(Thread, IsSharedByMany) {
    const auto thread = Started([](Thread* self, std::uint32_t) -> std::uint32_t {
        for (std::string name;;) {
            self->WaitForEvent(name);
        }
    });
    std::vector<std::unique_ptr<Thread>> others;
    for (int i = 0; i < 4; ++i) {
        others.push_back(Started([&, i](Thread*, std::uint32_t) -> std::uint32_t {
            for (int turn = 0; turn < 100; ++turn) {
                if (i == 0) {
                    EXPECT_TRUE(thread->Terminate(false));
                } else if (i == 1) {
                    thread->Execute();
                } else {
                    thread->SignalEvent("event");
                }
            }
            return 0;
        }));
    }
    for (const auto& other : others) {
        EXPECT_TRUE(WaitUntil([&] { return other->IsFinished(); }));
    }
    EXPECT_TRUE(thread->Terminate(false));
    EXPECT_FALSE(thread->IsRunning());
}

} // namespace
} // namespace ZelBase::test
