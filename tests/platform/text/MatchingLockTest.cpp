// Killing threads that match: what they leave behind must serve the next one.

#include "platform/text/MatchingLock.h"
#include "ZelBase/Handles.h"
#include "platform/text/RegularExpression.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tervane {
namespace {

constexpr DWORD kLong = 20000; // milliseconds; nothing here takes that long

std::atomic<bool> isMatching;

DWORD WINAPI HoldTheLockAgainAndAgain(void* begun) {
    for (;;) {
        const MatchingLock lock;
        isMatching = true;
        SetEvent(begun);
        Sleep(1);
        isMatching = false;
    }
}

DWORD WINAPI NeverGiveTheLockBack(void* begun) {
    const MatchingLock lock;
    SetEvent(begun);
    Sleep(INFINITE);
    return 0;
}

// True when the thread is gone.
bool RunAndKill(LPTHREAD_START_ROUTINE routine) {
    const ZelBase::UniqueHandle begun(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const ZelBase::UniqueHandle thread(CreateThread(nullptr, 0, routine, begun.Get(), 0, nullptr));
    return WaitForSingleObject(begun.Get(), kLong) == WAIT_OBJECT_0 &&
           ThreadKiller().Kill(thread.Get());
}

TEST(ThreadKiller, KillsNobodyInTheMidstOfMatching) {
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(RunAndKill(&HoldTheLockAgainAndAgain));
        ASSERT_FALSE(isMatching);
    }
}

TEST(ThreadKiller, FreesMatchingFromAThreadThatIsStuckInIt) {
    EXPECT_TRUE(RunAndKill(&NeverGiveTheLockBack));
    EXPECT_TRUE(RegularExpression::WholeTextMatch(L"a+").Matches(L"aa"));
    EXPECT_TRUE(RunAndKill(&HoldTheLockAgainAndAgain)); // and a killer need not wait any more
    EXPECT_FALSE(isMatching);
}

} // namespace
} // namespace tervane
