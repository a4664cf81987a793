#include "ZelBase/threads/Event.h"
#include "ZelBase/threads/ModulePin.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelBase/threads/Thread.h"

#include <gtest/gtest.h>

namespace ZelBase::test {
namespace {

// Runs `body` on a thread of its own and waits for its end.
template <typename Body>
void OnOtherThread(Body body) {
    const UniqueHandle thread = ModulePin::StartThread(body);
    ASSERT_EQ(WaitForSingleObject(thread.Get(), 20000), WAIT_OBJECT_0);
}

TEST(Event, LetsWaitersThroughUntilItIsReset) {
    const auto event = Event::Create();
    ASSERT_TRUE(event && event->IsValid());
    EXPECT_FALSE(event->Wait(0, nullptr));
    event->Set();
    EXPECT_TRUE(event->Wait(0, nullptr));
    EXPECT_TRUE(event->Wait(kInfinite, nullptr));
    event->Wait(nullptr);
    event->Reset();
    EXPECT_FALSE(event->Wait(20, nullptr));
    event->SetTimeout(20);
    EXPECT_THROW(event->Wait(nullptr), ThreadTerminateException);
}

TEST(Event, WakesAWaitingThread) {
    const auto event = Event::Create();
    OnOtherThread([&] { event->Set(); });
    EXPECT_TRUE(event->Wait(10000, nullptr));
}

TEST(Mutex, IsHadByOneThreadAtATime) {
    WIN32_Mutex mutex;
    EXPECT_EQ(mutex.OwnerThreadId(), WIN32_Mutex::kNoOwner);
    mutex.Lock(nullptr);
    EXPECT_TRUE(mutex.Lock(0, nullptr)); // again, by its owner
    EXPECT_EQ(mutex.OwnerThreadId(), GetCurrentThreadId());
    mutex.Unlock();
    EXPECT_EQ(mutex.OwnerThreadId(), WIN32_Mutex::kNoOwner);
    OnOtherThread([&] { EXPECT_FALSE(mutex.Lock(20, nullptr)); });
    mutex.Unlock();
    OnOtherThread([&] {
        EXPECT_TRUE(mutex.Lock(20, nullptr));
        mutex.Unlock();
    });
}

TEST(Mutex, PassesOnWhenItsOwnerDied) {
    const auto mutex = Mutex::Create();
    const auto die = [&] { mutex->Lock(nullptr); };
    OnOtherThread(die);
    EXPECT_TRUE(mutex->Lock(1000, nullptr));
    mutex->Unlock();
    OnOtherThread(die);
    mutex->Lock(nullptr);
    mutex->Unlock();
    OnOtherThread(die);
    const auto thread = Thread::Create();
    thread->SetThreadFunction([&](Thread* self, std::uint32_t) -> std::uint32_t {
        const bool locked = mutex->Lock(1000, self);
        mutex->Unlock();
        return locked ? 1 : 2;
    });
    ASSERT_TRUE(thread->Execute());
    EXPECT_TRUE(thread->Terminate(false));
    EXPECT_EQ(thread->GetExitCode(), 1u);
}

TEST(Mutex, IsLockedForAScope) {
    const auto mutex = Mutex::Create();
    {
        const MutexLock lock(mutex.get());
        OnOtherThread([&] { EXPECT_FALSE(mutex->Lock(0, nullptr)); });
    }
    OnOtherThread([&] { EXPECT_TRUE(mutex->Lock(0, nullptr)); });
    EXPECT_THROW(MutexLock(nullptr), ThreadTerminateException);
}

TEST(Primitives, PreferTheirObjectToTheThreadsEnd) {
    const auto event = Event::Create();
    const auto mutex = Mutex::Create();
    const auto thread = Thread::Create();
    // From here until its next run it is to end.
    thread->Terminate(false);
    EXPECT_THROW(event->Wait(kInfinite, thread.get()), ThreadTerminateException);
    EXPECT_THROW(event->Wait(thread.get()), ThreadTerminateException);
    // What can be had at once is had, termination or not.
    EXPECT_TRUE(mutex->Lock(kInfinite, thread.get()));
    mutex->Unlock();
    event->Set();
    EXPECT_TRUE(event->Wait(kInfinite, thread.get()));
}

} // namespace
} // namespace ZelBase::test
