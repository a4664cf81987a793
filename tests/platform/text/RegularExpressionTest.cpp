#include "platform/text/RegularExpression.h"
#include "support/TestThreads.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

namespace tervane {
namespace {

std::wstring Repeat(std::wstring_view part, size_t times) {
    std::wstring text;
    for (size_t i = 0; i < times; ++i) {
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
    const MatchCase cases[] = {
        {L"", L"", true},
        {L"", L"Notepad", true},
        {L"Note|Word", L"Untitled - Notepad", true},
        {L"note", L"Untitled - Notepad", false},
        {L"^Untitled", L"Untitled - Notepad", false},
        {L"^Untitled.*", L"Untitled - Notepad", true},
        {L"Notepad$", L"Untitled - Notepad", false},
        // An anchor that is none still counts.
        {L"[^x]otepad", L"Untitled - Notepad", false},
        {L"5\\$", L"costs 5$", false},
        {L"line", L"two\nlines", true},
    };
    for (const MatchCase& row : cases) {
        EXPECT_EQ(RegularExpression::ContainingMatch(row.pattern).Matches(row.text), row.matches)
            << row.pattern << " " << row.text;
    }
}

TEST(RegularExpression, InvalidPatternsMatchNothing) {
    for (const std::wstring& pattern :
         {std::wstring(L"("), std::wstring(L"a)"), std::wstring(L"*"), std::wstring(L"[z-a]"),
          std::wstring(L"a{3,1}"), std::wstring(L"\\"), std::wstring(L"[[:nonsense:]]"),
          std::wstring(L"(?<n"), std::wstring(L"(?R)a"), Repeat(L"(", 60'000),
          Repeat(L"(", 5'000) + Repeat(L")", 5'000), Repeat(L"a", 100'000)}) {
        const auto expression = RegularExpression::WholeTextMatch(pattern);
        EXPECT_FALSE(expression.IsValid()) << pattern.substr(0, 20);
        EXPECT_FALSE(expression.Matches(L""));
        EXPECT_FALSE(expression.Matches(pattern));
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
    std::vector<test::TestThread> threads;
    std::vector<int> wrong(4);
    for (int& count : wrong) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                const auto own = RegularExpression::WholeTextMatch(L"x" + std::to_wstring(i));
                count += !shared.Matches(L"ababc") || shared.Matches(L"abab") ||
                         !own.Matches(L"x" + std::to_wstring(i));
            }
        });
    }
    for (test::TestThread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
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

} // namespace
} // namespace tervane
