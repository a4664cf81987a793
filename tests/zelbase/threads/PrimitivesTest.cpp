#include "ZelBase/threads/Event.h"
#include "ZelBase/threads/ModulePin.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelBase/threads/Thread.h"
#include "tests/support/TestThreads.h"

#include <gtest/gtest.h>

namespace ZelBase::test {
namespace {

using tervane::test::OnThreads;

DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    EXPECT_EQ(WaitForSingleObject(thread, 20000), WAIT_OBJECT_0);
    GetExitCodeThread(thread, &code);
    return code;
}

TEST(Event, LetsWaitersThroughUntilItIsReset) {
    const auto event = Event::Create();
    ASSERT_TRUE(event && event->IsValid());
    EXPECT_FALSE(event->Wait(0, nullptr));
    OnThreads(1, [&](int) { event->Set(); });
    EXPECT_TRUE(event->Wait(0, nullptr));
    EXPECT_TRUE(event->Wait(kInfinite, nullptr));
    event->Wait(nullptr);
    event->Reset();
    EXPECT_FALSE(event->Wait(20, nullptr));
    event->SetTimeout(20);
    EXPECT_THROW(event->Wait(nullptr), ThreadTerminateException);
}

TEST(Mutex, IsHadByOneThreadAtATime) {
    WIN32_Mutex mutex;
    EXPECT_EQ(mutex.OwnerThreadId(), WIN32_Mutex::kNoOwner);
    {
        const MutexLock lock(&mutex);
        EXPECT_TRUE(mutex.Lock(0, nullptr)); // again, by its owner
        EXPECT_EQ(mutex.OwnerThreadId(), GetCurrentThreadId());
        mutex.Unlock();
        EXPECT_EQ(mutex.OwnerThreadId(), WIN32_Mutex::kNoOwner);
        OnThreads(1, [&](int) { EXPECT_FALSE(mutex.Lock(20, nullptr)); });
    }
    OnThreads(1, [&](int) {
        EXPECT_TRUE(mutex.Lock(20, nullptr));
        mutex.Unlock();
    });
    EXPECT_THROW(MutexLock(nullptr), ThreadTerminateException);
}

TEST(Mutex, PassesOnWhenItsOwnerDied) {
    const auto mutex = Mutex::Create();
    const auto thread = Thread::Create();
    thread->SetThreadFunction(
        [&](Thread* self, std::uint32_t) { return mutex->Lock(1000, self) ? 1u : 2u; });
    OnThreads(1, [&](int) { mutex->Lock(nullptr); });
    EXPECT_TRUE(mutex->Lock(1000, nullptr));
    mutex->Unlock();
    OnThreads(1, [&](int) { mutex->Lock(nullptr); });
    ASSERT_TRUE(thread->Execute());
    EXPECT_TRUE(thread->Terminate(false));
    EXPECT_EQ(thread->GetExitCode(), 1u);
    mutex->Lock(nullptr); // that thread has died with it, too
    mutex->Unlock();
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

// The library is unloaded when its thread ends, however that comes about, and not before.
TEST(ModulePin, KeepsALibraryUntilItsThreadHasEnded) {
    constexpr wchar_t kProbe[] = L"pin_probe.dll";
    for (const auto& [start, code] : {std::pair("StartLingering", DWORD{11}),
                                      {"StartThrowing", ModulePin::kEscapedException},
                                      {"StartEndingItself", 12}}) {
        UniqueLibrary probe(LoadLibraryW(kProbe));
        ASSERT_TRUE(probe) << "build pin_probe first";
        const UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const UniqueHandle thread(reinterpret_cast<HANDLE (*)(HANDLE)>(
            reinterpret_cast<void*>(GetProcAddress(probe.Get(), start)))(go.Get()));
        probe.Reset();
        Sleep(50);
        EXPECT_TRUE(GetModuleHandleW(kProbe)) << start;
        SetEvent(go.Get());
        EXPECT_EQ(ExitCode(thread.Get()), code);
        for (int i = 0; i < 400 && GetModuleHandleW(kProbe); ++i) {
            Sleep(5); // it lets go a moment before its end
        }
        EXPECT_FALSE(GetModuleHandleW(kProbe)) << start;
    }
}

TEST(ModulePin, MovesWhatTheRoutineOwns) {
    auto owned = std::make_unique<int>(5);
    auto shared = std::make_shared<int>(6);
    const std::weak_ptr<int> watched = shared;
    const UniqueHandle thread = ModulePin::StartThread(
        [owned = std::move(owned), shared = std::move(shared)] { return *owned + *shared; });
    EXPECT_EQ(ExitCode(thread.Get()), 11u);
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace ZelBase::test
