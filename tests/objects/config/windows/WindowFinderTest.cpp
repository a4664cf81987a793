// Windows of other processes and of other threads, as they come, hang, move and go.

#include "objects/config/windows/WindowFinder.h"
#include "ZelBase/Handles.h"
#include "platform/PumpingWait.h"
#include "support/OwnWindow.h"
#include "support/TestThreads.h"
#include "support/WindowProgram.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tervane {
namespace {

using test::OwnWindow;
using test::UniqueTitle;
using test::WindowProgram;

const std::wstring kUnicode = L"\x017B\x00F3\x0142w \x03BA\x03B1\x03BB\x03AE \xD83D\xDE00";

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

std::wstring TitleOf(HWND window) {
    WindowTitle title;
    return std::wstring(title.Read(window));
}

// Milliseconds that `body` takes.
template <typename Body>
DWORD TimeOf(Body&& body) {
    const DWORD start = GetTickCount();
    body();
    return GetTickCount() - start;
}

ZelBase::UniqueHandle NewEvent() {
    return ZelBase::UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

TEST(WindowTitle, IsReadWholeUpToItsLimitFromAnyProcess) {
    const std::wstring name = UniqueTitle(kUnicode);
    const std::wstring titles[] = {name, name + L" " + std::wstring(600, L'x')};
    for (const std::wstring& title : titles) {
        WindowProgram program({L"--title", title});
        ASSERT_TRUE(program.Expect("ready"));
        HWND window = WindowFinder(name, L"").Find();
        ASSERT_EQ(program.ProcessId(), ProcessOf(window));
        EXPECT_EQ(title.substr(0, 499), TitleOf(window));
    }
    EXPECT_EQ(L"", TitleOf(reinterpret_cast<HWND>(INT_PTR(0x7FFFFF0))));
}

int WINAPI NoWideText(HWND, wchar_t*, int) {
    SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return 0;
}

TEST(WindowTitle, IsReadTheNarrowWayWhereThereIsNoOther) {
    const std::wstring title = UniqueTitle(L"Narr\x00F6w");
    WindowProgram program({L"--title", title});
    ASSERT_TRUE(program.Expect("ready"));
    WindowTitle narrow(&NoWideText);
    EXPECT_EQ(title, narrow.Read(WindowFinder(title, L"").Find()));
}

TEST(WindowTitle, IsReadFromThreadsThatDoNotAnswer) {
    const std::wstring title = UniqueTitle(kUnicode);
    const OwnWindow ours(title + L" ours", OwnWindow::Thread::kHangs);
    WindowProgram theirs({L"--title", title + L" theirs", L"--hang-after", L"1"});
    ASSERT_TRUE(theirs.Expect("hanging"));
    HWND found[2];
    EXPECT_LT(TimeOf([&] {
                  found[0] = WindowFinder(title + L" ours", L"").Find();
                  found[1] = WindowFinder(title + L" theirs", L"").Find();
              }),
              10000u);
    EXPECT_EQ(ours.Handle(), found[0]);
    EXPECT_EQ(theirs.ProcessId(), ProcessOf(found[1]));
    EXPECT_EQ(title + L" theirs", TitleOf(found[1]));
}

TEST(WindowFinder, MatchesTitlesOfTheWindowAndBelow) {
    const std::wstring title = UniqueTitle(L"Find (me) [1]");
    WindowProgram program({L"--title", title, L"--group", L"Outer", L"--group", L"Inner",
                           L"--button", L"Deep", L"--end", L"--end", L"--check-box", kUnicode});
    ASSERT_TRUE(program.Expect("ready"));
    const std::wstring number = title.substr(title.find(L"] ") + 2);
    struct {
        std::wstring topLevel;
        std::wstring child;
        bool found;
    } cases[] = {
        {number, L"", true},
        {L"Find \\(me\\) \\[1\\] " + number, L"", true},
        {L"find.*" + number, L"", false}, // case counts
        {L"^Find.*" + number, L"", true},
        {L"^ind.*" + number, L"", false}, // the whole title with "^"
        {L"Find.*" + number + L"$", L"", true},
        {number + L"$", L"", false},
        {number, L"Deep", true},
        {number, L"^Inner$", true},
        {number, kUnicode.substr(2), true},
        {number, L"^Inn$", false},
        {number, L"Find", true}, // the window's own title counts
        {number, L"Absent", false},
        {number + L"(", L"", false},
        {number, L"*", false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.topLevel) + testing::PrintToString(row.child));
        WindowFinder finder(row.topLevel, row.child);
        HWND window = finder.Find();
        EXPECT_EQ(row.found, window != nullptr);
        EXPECT_TRUE(!window ||
                    (ProcessOf(window) == program.ProcessId() && TitleOf(window) == title));
    }
    EXPECT_TRUE(WindowFinder(number, L"Deep").IsValid());
    EXPECT_FALSE(WindowFinder(number + L"(", L"").IsValid());
    EXPECT_FALSE(WindowFinder(number, L"*").IsValid());
}

TEST(WindowFinder, SearchesBelowDepthFirst) {
    const std::wstring title = UniqueTitle(L"Depth");
    std::vector<std::wstring> options = {L"--title", title};
    const auto add = [&](std::initializer_list<const wchar_t*> more) {
        options.insert(options.end(), more.begin(), more.end());
    };
    constexpr int kDepth = 30;
    for (int i = 0; i < kDepth; ++i) {
        add({L"--group", L"Level"});
    }
    add({L"--button", L"Pick the deep one"});
    for (int i = 0; i < kDepth; ++i) {
        add({L"--end"});
    }
    add({L"--button", L"Pick the flat one", L"--button", L"Last"});
    WindowProgram program(options);
    ASSERT_TRUE(program.Expect("ready"));
    const auto idBelow = [&](const wchar_t* child) {
        WindowFinder finder(title, child);
        return GetDlgCtrlID(finder.FindBelow(finder.Find()));
    };
    EXPECT_EQ(101, idBelow(L"Pick"));
    EXPECT_EQ(102, idBelow(L"flat"));
    EXPECT_EQ(103, idBelow(L"Last"));
    EXPECT_EQ(0, idBelow(L"Absent"));
}

TEST(WindowFinder, ComesToAnEndWhileWindowsChangePlaces) {
    constexpr int kChildren = 40;
    const std::wstring title = UniqueTitle(L"Restless");
    const OwnWindow window(title, OwnWindow::Thread::kPumps, kChildren);
    std::atomic<bool> over = false;
    test::TestThread mover([&] {
        while (!over) {
            HWND last = GetWindow(GetWindow(window.Handle(), GW_CHILD), GW_HWNDLAST);
            SetWindowPos(last, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        }
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_LT(TimeOf([&] { EXPECT_EQ(nullptr, WindowFinder(title, L"Absent").Find()); }),
                  10000u);
    }
    over = true;
    mover.join();
}

TEST(WindowFinder, WaitsForAWindowToComeAndGo) {
    const ZelBase::UniqueHandle never = NewEvent();
    const std::wstring title = UniqueTitle(L"Late");
    WindowProgram program(
        {L"--title", title, L"--appear-after", L"700", L"--vanish-after", L"2500"});
    WindowFinder finder(title, L"");
    finder.SetTimeLimit(1);
    EXPECT_EQ(nullptr, finder.WaitUntilPresent(never.Get()));
    finder.SetTimeLimit(0); // the default
    finder.SetCheckInterval(-5);
    EXPECT_EQ(program.ProcessId(), ProcessOf(finder.WaitUntilPresent(never.Get())));
    EXPECT_TRUE(finder.WaitUntilGone(never.Get()));
    EXPECT_TRUE(program.Expect("vanished"));
}

TEST(WindowFinder, TakesInvisibleWindowsOnlyWhenTheyCount) {
    const ZelBase::UniqueHandle never = NewEvent();
    const std::wstring title = UniqueTitle(L"Hidden");
    WindowProgram program({L"--title", title, L"--hidden"});
    ASSERT_TRUE(program.Expect("ready"));
    WindowFinder finder(title, L"");
    finder.SetTimeLimit(1);
    finder.SetCheckInterval(20);
    EXPECT_EQ(nullptr, finder.WaitUntilPresent(never.Get()));
    EXPECT_TRUE(finder.WaitUntilGone(never.Get()));
    finder.SetVisibleOnly(false);
    EXPECT_NE(nullptr, finder.WaitUntilPresent(never.Get()));
    EXPECT_FALSE(finder.WaitUntilGone(never.Get()));
}

TEST(WindowFinder, DoesNotTakeAWindowForGoneWhenItsPatternWasTooCostly) {
    const ZelBase::UniqueHandle never = NewEvent();
    const std::wstring title = UniqueTitle(std::wstring(400, L'a'));
    const OwnWindow there(title, OwnWindow::Thread::kPumps);
    const std::wstring costly = L"(a+)+!";
    for (const auto& [topLevel, child] : {std::pair(costly, std::wstring()), {title, costly}}) {
        WindowFinder finder(topLevel, child);
        finder.SetTimeLimit(1);
        finder.SetCheckInterval(20);
        EXPECT_EQ(nullptr, finder.Find());
        EXPECT_FALSE(finder.WaitUntilGone(never.Get()));
    }
}

TEST(WindowFinder, BelievesThatAWindowIsGoneOnlyWhenItStaysAway) {
    const ZelBase::UniqueHandle never = NewEvent();
    const std::wstring title = UniqueTitle(L"Replaced");
    WindowFinder finder(title, L"");
    finder.SetTimeLimit(1);
    finder.SetCheckInterval(1500);
    std::unique_ptr<OwnWindow> replacement;
    test::TestThread replacer([&] {
        Sleep(200);
        replacement = std::make_unique<OwnWindow>(title, OwnWindow::Thread::kPumps);
    });
    EXPECT_FALSE(finder.WaitUntilGone(never.Get()));
    replacer.join();
    replacement.reset();
    EXPECT_TRUE(finder.WaitUntilGone(never.Get()));
}

TEST(WindowFinder, IsWokenByAnAbort) {
    const std::wstring title = UniqueTitle(L"Aborted");
    const OwnWindow there(title, OwnWindow::Thread::kPumps);
    for (const std::wstring& pattern : {title, UniqueTitle(L"Absent")}) {
        const bool isThere = pattern == title;
        const ZelBase::UniqueHandle abort = NewEvent();
        test::TestThread aborter([&] {
            Sleep(100);
            SetEvent(abort.Get());
        });
        WindowFinder finder(pattern, L"");
        finder.SetCheckInterval(60000);
        // Absent, the wait for its going is inside the confirmation when the abort comes.
        EXPECT_LT(TimeOf([&] {
                      EXPECT_FALSE(finder.WaitUntilGone(abort.Get()));
                      EXPECT_EQ(isThere, finder.WaitUntilPresent(abort.Get()) != nullptr);
                  }),
                  20000u);
        aborter.join();
    }
}

TEST(PumpingWait, DispatchesMessagesAndKeepsTheRequestToQuit) {
    const ZelBase::UniqueHandle answered = NewEvent();
    HWND window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    test::TestThread sender([&, window] {
        SendMessageW(window, WM_NULL, 0, 0); // comes back only when this thread dispatches
        SetEvent(answered.Get());
    });
    PostQuitMessage(7);
    EXPECT_TRUE(WaitWhilePumping(answered.Get(), 10000));
    sender.join();
    MSG message = {};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(7u, message.wParam);
    DestroyWindow(window);

    // Without a pause between the messages, time still runs out.
    const ZelBase::UniqueHandle never = NewEvent();
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, nullptr);
    EXPECT_LT(TimeOf([&] { EXPECT_FALSE(WaitWhilePumping(never.Get(), 300)); }), 5000u);
    KillTimer(nullptr, timer);
}

} // namespace
} // namespace tervane
