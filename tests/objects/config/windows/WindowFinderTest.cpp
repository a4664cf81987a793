// Windows as they are found, as they change places and as they go; how scripts wait for them is in
// the tests of WindowMgr.

#include "objects/config/windows/WindowFinder.h"
#include "ZelBase/Handles.h"
#include "platform/PumpingWait.h"
#include "support/TestThreads.h"
#include "support/TestWindows.h"

#include <gtest/gtest.h>

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
        EXPECT_TRUE(!window || (ProcessOf(window) == program.Id() && TitleOf(window) == title));
    }
    EXPECT_TRUE(WindowFinder(number, L"Deep").IsValid());
    EXPECT_FALSE(WindowFinder(number + L"(", L"").IsValid());
    EXPECT_FALSE(WindowFinder(number, L"*").IsValid());
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
