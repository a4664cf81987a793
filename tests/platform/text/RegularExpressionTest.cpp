#include "platform/text/RegularExpression.h"
#include "ZelBase/Handles.h"
#include "platform/text/MatchingLock.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tervane {
namespace {

using namespace std::string_literals;

std::wstring Repeat(std::wstring_view part, std::size_t times) {
    std::wstring text;
    for (std::size_t i = 0; i < times; ++i) {
        text += part;
    }
    return text;
}

struct MatchCase {
    std::wstring pattern;
    std::wstring text;
    bool matches;
};

TEST(RegularExpression, MatchesWholeText) {
    const MatchCase cases[] = {
        {L"", L"", true},
        {L"", L"anything", true},
        {L"abc", L"abc", true},
        {L"abc", L"xabc", false},
        {L"abc", L"abcx", false},
        {L"abc", L"ABC", false},
        {L"(?i)straße Ü", L"STRAße ü", true},
        {L"a.*z", L"a\r\nz", true},
        {L"^.*ether.*$", L"fast ethernet", true},
        {L"^[U|u][S|s][B|b]$", L"uSb", true},
        {L"\\w+\\s\\d{2,3}", L"Größe 123", true},
        {L"(a|b)\\1", L"bb", true},
        {L"(a|b)\\1", L"ba", false},
        {L"[\\x{400}-\\x{4FF}]+", L"\x43F\x440\x438", true},
        {L"[a-c]", L"ä", false},
        {std::wstring(L"a\0b", 3), std::wstring(L"a\0b", 3), true},
        {L".*", std::wstring(L"\0", 1), true},
        {L"(a(?1)?b)", L"aaabbb", true},
        {L"(a(?1)?b)", L"aaabb", false},
    };
    for (const MatchCase& row : cases) {
        const auto expression = RegularExpression::WholeTextMatch(row.pattern);
        EXPECT_TRUE(expression.IsValid()) << row.pattern;
        EXPECT_EQ(expression.Matches(row.text), row.matches) << row.pattern << " " << row.text;
    }
}

TEST(RegularExpression, ContainingMatchWrapsOnlyPatternsWithoutAnchors) {
    const std::wstring text = L"Untitled - Notepad\n5$";
    for (const wchar_t* pattern : {L"", L"Note|Word", L"^Untitled.*", L"5"}) {
        EXPECT_TRUE(RegularExpression::ContainingMatch(pattern).Matches(text)) << pattern;
    }
    // An anchor that is none still counts.
    for (const wchar_t* pattern : {L"note", L"^Untitled", L"5$", L"[^x]otepad", L"5\\$"}) {
        EXPECT_FALSE(RegularExpression::ContainingMatch(pattern).Matches(text)) << pattern;
    }
    EXPECT_TRUE(RegularExpression::ContainingMatch(L"").Matches(L""));
}

TEST(RegularExpression, InvalidPatternsMatchNothing) {
    for (const std::wstring& pattern :
         {L"("s, L"a)"s, L"*"s, L"[z-a]"s, L"a{3,1}"s, L"\\"s, L"[[:nonsense:]]"s, L"(?<n"s,
          L"(?R)a"s, Repeat(L"(", 60'000), Repeat(L"(", 5'000) + Repeat(L")", 5'000),
          Repeat(L"a", 100'000)}) {
        const auto expression = RegularExpression::WholeTextMatch(pattern);
        EXPECT_FALSE(expression.IsValid()) << pattern.substr(0, 20);
        EXPECT_FALSE(expression.Matches(L"") || expression.Matches(pattern));
    }
}

// Without the purse the first of these would take longer than the universe has left; the others
// crash or take gigabytes. No time is asserted: the run ends or hangs.
TEST(RegularExpression, ExplosivePatternsEnd) {
    const MatchCase cases[] = {
        {L"(a+)+$b", Repeat(L"a", 1'000), false},
        {L"(a|aa)+$", Repeat(L"a", 10'000) + L"b", false},
        {Repeat(L"(", 300) + L"a" + Repeat(L")*", 300), Repeat(L"a", 500) + L"b", false},
        {Repeat(L"[ab]*", 8) + L"c", Repeat(L"a", 100'000), false},
        {Repeat(L"a?", 1'000) + Repeat(L"a", 1'000), Repeat(L"a", 1'000), false},
        {L"((a{1,100}){1,100}){1,100}b", Repeat(L"a", 1'000), false},
        {L"(a{1000000000}){1000000000}", Repeat(L"a", 1'000), false},
        {L"(a(?1)?b)" + Repeat(L"()", 20'000), Repeat(L"a", 20'000), false},
        {L"(?>a(?R)?b)", Repeat(L"a", 10'000) + Repeat(L"b", 10'000), false},
        {L"(()|()|()|()){100}x", L"", false},
        {Repeat(L"(?=", 300) + L"a" + Repeat(L")", 300), Repeat(L"a", 500), false},
    };
    for (const MatchCase& row : cases) {
        const auto expression = RegularExpression::WholeTextMatch(row.pattern);
        EXPECT_EQ(expression.Matches(row.text), row.matches) << row.pattern.substr(0, 40);
    }
}

TEST(RegularExpression, SpentPurseMatchesNothingForTheRestOfTheOperation) {
    const auto expression = RegularExpression::WholeTextMatch(L"(a|aa)+");
    EXPECT_TRUE(expression.Matches(L"aaa"));
    EXPECT_FALSE(expression.IsSpent());
    EXPECT_FALSE(expression.Matches(Repeat(L"a", 10'000) + L"b"));
    EXPECT_TRUE(expression.IsSpent());
    EXPECT_FALSE(expression.Matches(L"aaa"));
    expression.BeginOperation();
    EXPECT_TRUE(expression.Matches(L"aaa"));
}

TEST(RegularExpression, PlainPatternsNeverSpendTheirPurse) {
    const auto expression = RegularExpression::ContainingMatch(L"(Set|In)up.*Wizard");
    const std::wstring other = Repeat(L"Settings of an Inn ", 25);
    for (int i = 0; i < 3'000; ++i) {
        ASSERT_FALSE(expression.Matches(other));
    }
    EXPECT_TRUE(expression.Matches(other + L"Setup of the Wizard"));
    const std::wstring huge(2'000'000, L'x');
    EXPECT_TRUE(RegularExpression::WholeTextMatch(L"[wxy]*").Matches(huge));
}

TEST(RegularExpression, ServesSeveralThreadsAtOnce) {
    const auto shared = RegularExpression::WholeTextMatch(L"(a|b)+c");
    std::atomic<int> wrong = 0;
    test::OnThreads(4, [&](int) {
        for (int i = 0; i < 500; ++i) {
            const std::wstring own = L"x" + std::to_wstring(i);
            wrong += !shared.Matches(L"ababc") || shared.Matches(L"abab") ||
                     !RegularExpression::WholeTextMatch(own).Matches(own);
        }
    });
    EXPECT_EQ(wrong, 0);
}

DWORD WINAPI MatchNestedPatterns(void*) {
    const std::wstring nested = Repeat(L"(?:", 390) + L"a" + Repeat(L"|b)*", 390);
    const bool isValid = RegularExpression::WholeTextMatch(nested).IsValid();
    const std::wstring recursive = L"(?>a(?R)?b)|(?>(?>(?>x)))";
    RegularExpression::WholeTextMatch(recursive).Matches(Repeat(L"a", 10'000));
    return isValid;
}

// Hosts start threads with small stacks; neither compiling nor matching may overrun one.
TEST(RegularExpression, NestingFitsASmallStack) {
    HANDLE thread = CreateThread(nullptr, 256 * 1024, MatchNestedPatterns, nullptr,
                                 STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD isValid = 0;
    GetExitCodeThread(thread, &isValid);
    CloseHandle(thread);
    EXPECT_EQ(isValid, 1u);
}

// Killing threads that match: what they leave behind must serve the next one.
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
