// The window manager, driven late-bound on windows of other programs.

#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/TestWindows.h"

#include <map>

namespace tervane::test {
namespace {

constexpr DWORD kAtOnce = 15000;   // far less than the pauses of the waits that use it
constexpr DWORD kManyLooks = 1500; // enough for every quick wait to have looked more than once
constexpr int kQuick = 20;         // check interval of the waits
constexpr int kSlow = 60000;

enum Event : DISPID { kOnWaitOnWindow = 1, kOnWaitForWindow = 2, kOnComeAndGo = 3 };

class WindowMgrTest : public ObjectTest {
protected:
    WindowMgrTest() : ObjectTest(L"WindowMgr") {}

    // Starts a wait; its number.
    int Begin(const wchar_t* method, const std::vector<Argument>& arguments) {
        return std::stoi(Ask(method, arguments));
    }
    // The event of that number's end must be the next.
    void ExpectEnd(int event, int wait, int result) {
        EXPECT_EQ(std::to_wstring(event) + L"(" + std::to_wstring(wait) + L", " +
                      std::to_wstring(result) + L")",
                  Event());
    }
};

TEST_F(WindowMgrTest, WaitsForAWindowToComeAndToGo) {
    const std::wstring title = UniqueTitle(L"Waited \x4F60\x597D");
    const int came = Begin(L"WaitForWindow", {title, L"", kQuick});
    const int cameAndWent = Begin(L"WaitForWindowToComeAndGo", {title, L"Press", kQuick});
    EXPECT_EQ(1, came);
    EXPECT_EQ(2, cameAndWent);
    WindowProgram program({L"--title", title, L"--appear-after", L"200", L"--button", L"Press me"});
    ExpectEnd(kOnWaitForWindow, came, 0);
    const int went = Begin(L"WaitOnWindow", {title, L"", kQuick});
    EXPECT_EQ(3, went);
    EXPECT_FALSE(sink_.WaitFor(2, kManyLooks));
    Answers({{L"SetWindowState", {3, title}, L"true"}});
    ASSERT_TRUE(sink_.WaitFor(3, kPatience));
    std::map<long, DISPID> ended; // the two end in any order
    for (const std::size_t i : {1, 2}) {
        EXPECT_EQ(0, sink_[i].arguments[1].Get().lVal);
        ended[sink_[i].arguments[0].Get().lVal] = sink_[i].id;
    }
    EXPECT_EQ((std::map<long, DISPID>{{cameAndWent, kOnComeAndGo}, {went, kOnWaitOnWindow}}),
              ended);
    Answers({{L"LastErrorCode", {}, L"0"}});
}

TEST_F(WindowMgrTest, CountsPassesForTheTimeOut) {
    const std::wstring title = UniqueTitle(L"Passes");
    DWORD start = GetTickCount();
    const int absent = Begin(L"WaitForWindow", {title, L"", 200, true, 2});
    ExpectEnd(kOnWaitForWindow, absent, 1);
    EXPECT_GE(GetTickCount() - start, 3 * 200u - 50); // the passes 0, 1 and 2

    WindowProgram program({L"--title", title});
    ASSERT_TRUE(program.Expect("ready"));
    const int stays = Begin(L"WaitOnWindow", {title, L"", kQuick, true, 1});
    ExpectEnd(kOnWaitOnWindow, stays, 1);
    // The same count goes on after the window has come, unless only its coming has a time-out.
    const int counted = Begin(L"WaitForWindowToComeAndGo", {title, L"", kQuick, true, 2, false});
    ExpectEnd(kOnComeAndGo, counted, 1);
    const int uncounted = Begin(L"WaitForWindowToComeAndGo", {title, L"", kQuick, true, 2, true});
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, kManyLooks));
    Answers({{L"SetWindowState", {3, title}, L"true"}});
    ExpectEnd(kOnComeAndGo, uncounted, 0);
    // Below 1, there is none.
    const int negative = Begin(L"WaitForWindow", {title, L"", kQuick, true, -5});
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, 500));
    Ask(L"AbortWait", {negative});
    ExpectEnd(kOnWaitForWindow, negative, 2);
}

TEST_F(WindowMgrTest, AbortsWaitsAtOnce) {
    const std::wstring absent = UniqueTitle(L"Absent");
    const OwnWindow present(UniqueTitle(L"Present"), OwnWindow::Thread::kPumps);
    const int waits[] = {
        Begin(L"WaitForWindow", {absent, L"", kSlow}),
        Begin(L"WaitForWindowToComeAndGo", {absent, L"", kSlow}),
        Begin(L"WaitOnWindow", {L"Present", L"", kSlow}),
        Begin(L"WaitOnWindow", {absent, L"", kSlow}), // looks once more before it believes it
    };
    const DISPID events[] = {kOnWaitForWindow, kOnComeAndGo, kOnWaitOnWindow, kOnWaitOnWindow};
    for (int i = 0; i < 4; ++i) {
        Answers({{L"AbortWait", {waits[i]}, L"true"}});
        ExpectEnd(events[i], waits[i], 2);
    }
    Answers({{L"LastErrorCode", {}, L"0"}});

    const int ended = Begin(L"WaitForWindow", {L"Present", L"", kQuick});
    ExpectEnd(kOnWaitForWindow, ended, 0);
    Answers({{L"AbortWait", {ended}, L"true"}});
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, 300));

    Answers({{L"AbortWait", {12345}, L"false"}, {L"LastErrorCode", {}, L"5"}});
}

TEST_F(WindowMgrTest, TellsAndChangesTheStateOfAWindow) {
    const std::wstring title = UniqueTitle(L"State");
    WindowProgram program({L"--title", title});
    ASSERT_TRUE(program.Expect("ready"));
    Answers({{L"GetWindowState", {title}, L"1"}, {L"SetWindowState", {2, title}, L"true"}});
    EXPECT_TRUE(program.Expect("hidden"));
    Answers({{L"GetWindowState", {title, L""}, L"2"},
             {L"SetWindowState", {1, title}, L"true"},
             {L"GetWindowState", {title}, L"1"}});
    EXPECT_TRUE(program.Expect("shown"));
    Answers({{L"SetWindowState", {7, title}, L"true"},
             {L"GetWindowState", {title}, L"1"},
             {L"LastErrorCode", {}, L"0"},
             {L"SetWindowState", {3, title}, L"true"}});
    EXPECT_TRUE(program.Expect("closed"));
    Answers({{L"GetWindowState", {title}, L"3"},
             {L"SetWindowState", {1, title}, L"false"},
             {L"LastErrorCode", {}, L"4"},
             {L"SetWindowState", {1, L"(" + title}, L"false"},
             {L"LastErrorCode", {}, L"2"},
             {L"GetWindowState", {L"(" + title}, L"3"}});
}

TEST_F(WindowMgrTest, CountsInvisibleWindowsOnlyForTheOneTrueFlag) {
    const std::wstring title = UniqueTitle(L"Invisible");
    WindowProgram program({L"--title", title, L"--hidden"});
    ASSERT_TRUE(program.Expect("ready"));
    const auto manager = QueryFor<IWindowMgr>(object_.Get());
    const UniqueBstr pattern = MakeBstr(title);
    const std::pair<VARIANT_BOOL, long> cases[] = {{VARIANT_TRUE, 0}, {1, 1}, {VARIANT_FALSE, 1}};
    for (const auto& [flag, result] : cases) {
        long wait = 0;
        EXPECT_EQ(S_OK, manager->WaitForWindow(pattern.Get(), nullptr, kQuick, flag, 1, &wait));
        ExpectEnd(kOnWaitForWindow, wait, result);
    }
    // The number of a script has become a flag before it arrives.
    ExpectEnd(kOnWaitForWindow, Begin(L"WaitForWindow", {title, L"", kQuick, 1, 1}), 0);
    ExpectEnd(kOnWaitOnWindow, Begin(L"WaitOnWindow", {title, L"", kQuick, true, 1}), 1);
    ExpectEnd(kOnWaitOnWindow, Begin(L"WaitOnWindow", {title, L"", kQuick, false, 1}), 0);
}

TEST_F(WindowMgrTest, ReadsTheTitleOfTheTopLevelWindow) {
    const std::wstring title = UniqueTitle(L"Title \x17B\xF3\x142w") + std::wstring(600, L'.');
    WindowProgram program({L"--title", title, L"--button", L"Below"});
    ASSERT_TRUE(program.Expect("ready"));
    const std::wstring pattern = title.substr(0, title.find(L'.'));
    const std::wstring start = title.substr(0, 499);
    Answers({{L"GetMatchingWindowTitleText", {pattern, L""}, start},
             {L"GetMatchingWindowTitleText", {pattern, L"^Below$"}, start},
             {L"GetMatchingWindowTitleText", {pattern, L"Above"}, L""},
             {L"GetMatchingWindowTitleText", {L"[", L""}, L""}});
}

TEST_F(WindowMgrTest, PressesButtonsAndSetsCheckBoxes) {
    const std::wstring title = UniqueTitle(L"Dialog");
    WindowProgram program({L"--title", title, L"--group", L"Page", L"--button", L"Apply now",
                           L"--check-box", L"Remember \xE9", L"--end", L"--button", L"Apply"});
    ASSERT_TRUE(program.Expect("ready"));
    Answers({{L"ClickButton", {title, L"^Apply$"}, L"true"}});
    EXPECT_TRUE(program.Expect("command 103 0 control"));
    Answers({{L"ClickButton", {title, L"Apply"}, L"true"}}); // the first one, depth first
    EXPECT_TRUE(program.Expect("command 101 0 control"));
    for (const bool checked : {true, false}) {
        Answers({{L"SetButtonCheckState", {title, L"Remember \xE9", checked}, L"true"}});
        EXPECT_TRUE(program.Expect("command 102 0 control"));
        EXPECT_TRUE(program.Expect(checked ? "set-check 102 1" : "set-check 102 0"));
    }
    Answers({{L"ClickButton", {title, L"Cancel"}, L"false"},
             {L"ClickButton", {title, L"^Page$"}, L"false"}}); // it has no control identifier
    Answers({{L"ClickButton", {title, L"Dialog"}, L"false"}}); // nor has the window itself
    Answers({{L"SetButtonCheckState", {title + L"x", L"Apply", true}, L"false"}});
    EXPECT_EQ(std::nullopt, program.ReadLine(0));
}

TEST_F(WindowMgrTest, IsNotHeldUpByWindowsThatDoNotAnswer) {
    const std::wstring title = UniqueTitle(L"Hung");
    WindowProgram program({L"--title", title, L"--button", L"Press", L"--hang-after", L"1"});
    const OwnWindow ours(title + L" ours", OwnWindow::Thread::kHangs);
    ASSERT_TRUE(program.Expect("hanging"));
    const DWORD start = GetTickCount();
    Answers({{L"GetWindowState", {title + L"$"}, L"1"},
             {L"SetWindowState", {2, L"^" + title}, L"true"},
             {L"SetWindowState", {2, title + L" ours"}, L"true"}});
    EXPECT_EQ(title, Ask(L"GetMatchingWindowTitleText", {L"^" + title}));
    Answers({{L"ClickButton", {L"^" + title, L"Press"}, L"true"}});
    EXPECT_LT(GetTickCount() - start, kAtOnce);
}

TEST_F(WindowMgrTest, TakesNullTextsForEmptyOnes) {
    const auto manager = QueryFor<IWindowMgr>(object_.Get());
    long state = 0; // a null text is empty, and an empty pattern matches every window
    EXPECT_EQ(S_OK, manager->GetWindowState(nullptr, nullptr, &state));
    EXPECT_NE(3, state);
    long wait = 0;
    EXPECT_EQ(S_OK,
              manager->WaitForWindow(nullptr, nullptr, INT_MIN, VARIANT_TRUE, INT_MAX, &wait));
    EXPECT_EQ(1, wait); // the refused ones took no number
    ExpectEnd(kOnWaitForWindow, wait, 0);
    Answers({{L"ClickButton", {std::wstring(100000, L'a'), std::wstring(100000, L'(')}, L"false"}});
}

} // namespace
} // namespace tervane::test
