// The window manager, driven late-bound on windows of other programs.

#include "support/HandleCount.h"
#include "support/OwnWindow.h"
#include "support/TestComponent.h"
#include "support/WindowProgram.h"

#include <TERVANELib.h>

#include <gtest/gtest.h>

#include <map>

namespace tervane::test {
namespace {

constexpr DWORD kLong = 20000;     // milliseconds; how long an event is waited for
constexpr DWORD kAtOnce = 15000;   // far less than the pauses of the waits that use it
constexpr DWORD kManyLooks = 1500; // enough for every quick wait to have looked more than once
constexpr int kQuick = 20;         // check interval of the waits
constexpr int kSlow = 60000;

enum Event : DISPID { kOnWaitOnWindow = 1, kOnWaitForWindow = 2, kOnComeAndGo = 3 };

class WindowMgrTest : public testing::Test {
protected:
    WindowMgrTest() : manager_(TestComponent::Get().Create(__uuidof(WindowMgr))) {
        cookie_ = Advise(manager_.Get(), &sink_);
    }
    ~WindowMgrTest() override {
        manager_.Reset();
        EXPECT_EQ(0, sink_.References());
    }

    long Number(const wchar_t* member, std::initializer_list<Argument> arguments) {
        const CallResult result = Call(manager_.Get(), member, arguments);
        EXPECT_EQ(S_OK, result.status) << testing::PrintToString(member);
        return result.Number();
    }
    bool Truth(const wchar_t* member, std::initializer_list<Argument> arguments) {
        return Number(member, arguments) == VARIANT_TRUE;
    }
    long LastErrorCode() { return Read(manager_.Get(), L"LastErrorCode").Number(); }

    // The next event and its result; checks that it is about `wait`.
    std::pair<DISPID, long> EndOf(long wait, DWORD milliseconds = kLong) {
        const size_t next = seen_++;
        if (!sink_.WaitFor(next + 1, milliseconds)) {
            ADD_FAILURE() << "no event for wait " << wait;
            return {};
        }
        const ReceivedEvent& event = sink_[next];
        EXPECT_EQ(2u, event.arguments.size());
        EXPECT_EQ(VT_I4, event.arguments[0].Type());
        EXPECT_EQ(wait, event.arguments[0].Get().lVal);
        EXPECT_NE(GetCurrentThreadId(), event.thread);
        return {event.id, event.arguments[1].Get().lVal};
    }

    Apartment apartment_;
    RecordingSink sink_;
    ComPtr<IDispatch> manager_;
    DWORD cookie_;
    size_t seen_ = 0;
};

using Ended = std::pair<DISPID, long>;

TEST_F(WindowMgrTest, WaitsForAWindowToComeAndToGo) {
    const std::wstring title = UniqueTitle(L"Waited \x4F60\x597D");
    const long came = Number(L"WaitForWindow", {title, L"", kQuick});
    const long cameAndWent = Number(L"WaitForWindowToComeAndGo", {title, L"Press", kQuick});
    EXPECT_EQ(1, came);
    EXPECT_EQ(2, cameAndWent);
    WindowProgram program({L"--title", title, L"--appear-after", L"200", L"--button", L"Press me"});
    EXPECT_EQ(Ended(kOnWaitForWindow, 0), EndOf(came));
    const long went = Number(L"WaitOnWindow", {title, L"", kQuick});
    EXPECT_EQ(3, went);
    EXPECT_FALSE(sink_.WaitFor(2, kManyLooks));
    EXPECT_TRUE(Truth(L"SetWindowState", {3, title}));
    ASSERT_TRUE(sink_.WaitFor(3, kLong));
    std::map<long, DISPID> ended; // the two end in any order
    for (const size_t i : {1, 2}) {
        EXPECT_EQ(0, sink_[i].arguments[1].Get().lVal);
        ended[sink_[i].arguments[0].Get().lVal] = sink_[i].id;
    }
    EXPECT_EQ((std::map<long, DISPID>{{cameAndWent, kOnComeAndGo}, {went, kOnWaitOnWindow}}),
              ended);
    EXPECT_EQ(0, LastErrorCode());
}

TEST_F(WindowMgrTest, CountsPassesForTheTimeOut) {
    const std::wstring title = UniqueTitle(L"Passes");
    DWORD start = GetTickCount();
    const long absent = Number(L"WaitForWindow", {title, L"", 200, true, 2});
    EXPECT_EQ(Ended(kOnWaitForWindow, 1), EndOf(absent));
    EXPECT_GE(GetTickCount() - start, 3 * 200u - 50); // the passes 0, 1 and 2

    WindowProgram program({L"--title", title});
    ASSERT_TRUE(program.Expect("ready"));
    const long stays = Number(L"WaitOnWindow", {title, L"", kQuick, true, 1});
    EXPECT_EQ(Ended(kOnWaitOnWindow, 1), EndOf(stays));
    // The same count goes on after the window has come, unless only its coming has a time-out.
    const long counted = Number(L"WaitForWindowToComeAndGo", {title, L"", kQuick, true, 2, false});
    EXPECT_EQ(Ended(kOnComeAndGo, 1), EndOf(counted));
    const long uncounted = Number(L"WaitForWindowToComeAndGo", {title, L"", kQuick, true, 2, true});
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, kManyLooks));
    EXPECT_TRUE(Truth(L"SetWindowState", {3, title}));
    EXPECT_EQ(Ended(kOnComeAndGo, 0), EndOf(uncounted));
    // Below 1, there is none.
    const long negative = Number(L"WaitForWindow", {title, L"", kQuick, true, -5});
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, 500));
    Truth(L"AbortWait", {negative});
    EXPECT_EQ(Ended(kOnWaitForWindow, 2), EndOf(negative));
}

TEST_F(WindowMgrTest, AbortsWaitsAtOnce) {
    const std::wstring absent = UniqueTitle(L"Absent");
    const OwnWindow present(UniqueTitle(L"Present"), OwnWindow::Thread::kPumps);
    const long waits[] = {
        Number(L"WaitForWindow", {absent, L"", kSlow}),
        Number(L"WaitForWindowToComeAndGo", {absent, L"", kSlow}),
        Number(L"WaitOnWindow", {L"Present", L"", kSlow}),
    };
    const DISPID events[] = {kOnWaitForWindow, kOnComeAndGo, kOnWaitOnWindow};
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Truth(L"AbortWait", {waits[i]}));
        EXPECT_EQ(Ended(events[i], 2), EndOf(waits[i], kAtOnce));
    }
    EXPECT_EQ(0, LastErrorCode());

    const long ended = Number(L"WaitForWindow", {L"Present", L"", kQuick});
    EXPECT_EQ(Ended(kOnWaitForWindow, 0), EndOf(ended));
    EXPECT_TRUE(Truth(L"AbortWait", {ended}));
    EXPECT_FALSE(sink_.WaitFor(seen_ + 1, 300));

    EXPECT_FALSE(Truth(L"AbortWait", {12345}));
    EXPECT_EQ(5, LastErrorCode());
}

TEST_F(WindowMgrTest, TellsAndChangesTheStateOfAWindow) {
    const std::wstring title = UniqueTitle(L"State");
    WindowProgram program({L"--title", title});
    ASSERT_TRUE(program.Expect("ready"));
    EXPECT_EQ(1, Number(L"GetWindowState", {title}));
    EXPECT_TRUE(Truth(L"SetWindowState", {2, title}));
    EXPECT_TRUE(program.Expect("hidden"));
    EXPECT_EQ(2, Number(L"GetWindowState", {title, L""}));
    EXPECT_TRUE(Truth(L"SetWindowState", {1, title}));
    EXPECT_EQ(1, Number(L"GetWindowState", {title}));
    EXPECT_TRUE(program.Expect("shown"));
    EXPECT_TRUE(Truth(L"SetWindowState", {7, title}));
    EXPECT_EQ(1, Number(L"GetWindowState", {title}));
    EXPECT_EQ(0, LastErrorCode());
    EXPECT_TRUE(Truth(L"SetWindowState", {3, title}));
    EXPECT_TRUE(program.Expect("closed"));
    EXPECT_EQ(3, Number(L"GetWindowState", {title}));
    EXPECT_FALSE(Truth(L"SetWindowState", {1, title}));
    EXPECT_EQ(4, LastErrorCode());
    EXPECT_FALSE(Truth(L"SetWindowState", {1, L"(" + title}));
    EXPECT_EQ(2, LastErrorCode());
    EXPECT_EQ(3, Number(L"GetWindowState", {L"(" + title}));
}

TEST_F(WindowMgrTest, CountsInvisibleWindowsOnlyForTheOneTrueFlag) {
    const std::wstring title = UniqueTitle(L"Invisible");
    WindowProgram program({L"--title", title, L"--hidden"});
    ASSERT_TRUE(program.Expect("ready"));
    const auto manager = QueryFor<IWindowMgr>(manager_.Get());
    const UniqueBstr pattern = MakeBstr(title);
    const std::pair<VARIANT_BOOL, long> cases[] = {{VARIANT_TRUE, 0}, {1, 1}, {VARIANT_FALSE, 1}};
    for (const auto& [flag, result] : cases) {
        long wait = 0;
        EXPECT_EQ(S_OK, manager->WaitForWindow(pattern.Get(), nullptr, kQuick, flag, 1, &wait));
        EXPECT_EQ(Ended(kOnWaitForWindow, result), EndOf(wait));
    }
    // The number of a script has become a flag before it arrives.
    EXPECT_EQ(Ended(kOnWaitForWindow, 0),
              EndOf(Number(L"WaitForWindow", {title, L"", kQuick, 1, 1})));
}

TEST_F(WindowMgrTest, ReadsTheTitleOfTheTopLevelWindow) {
    const std::wstring title = UniqueTitle(L"Title \x17B\xF3\x142w") + std::wstring(600, L'.');
    WindowProgram program({L"--title", title, L"--button", L"Below"});
    ASSERT_TRUE(program.Expect("ready"));
    const std::wstring pattern = title.substr(0, title.find(L'.'));
    const auto textOf = [&](const std::wstring& topLevel, const wchar_t* child) {
        return Call(manager_.Get(), L"GetMatchingWindowTitleText", {topLevel, child}).Text();
    };
    EXPECT_EQ(title.substr(0, 499), textOf(pattern, L""));
    EXPECT_EQ(title.substr(0, 499), textOf(pattern, L"^Below$"));
    EXPECT_EQ(L"", textOf(pattern, L"Above"));
    EXPECT_EQ(L"", textOf(L"[", L""));
}

TEST_F(WindowMgrTest, PressesButtonsAndSetsCheckBoxes) {
    const std::wstring title = UniqueTitle(L"Dialog");
    WindowProgram program({L"--title", title, L"--group", L"Page", L"--button", L"Apply now",
                           L"--check-box", L"Remember \xE9", L"--end", L"--button", L"Apply"});
    ASSERT_TRUE(program.Expect("ready"));
    EXPECT_TRUE(Truth(L"ClickButton", {title, L"^Apply$"}));
    EXPECT_TRUE(program.Expect("command 103 0 control"));
    EXPECT_TRUE(Truth(L"ClickButton", {title, L"Apply"})); // the first one, depth first
    EXPECT_TRUE(program.Expect("command 101 0 control"));
    for (const bool checked : {true, false}) {
        EXPECT_TRUE(Truth(L"SetButtonCheckState", {title, L"Remember \xE9", checked}));
        EXPECT_TRUE(program.Expect("command 102 0 control"));
        EXPECT_TRUE(program.Expect(checked ? "set-check 102 1" : "set-check 102 0"));
    }
    EXPECT_FALSE(Truth(L"ClickButton", {title, L"Cancel"}));
    EXPECT_FALSE(Truth(L"ClickButton", {title, L"^Page$"})); // it has no control identifier
    EXPECT_FALSE(Truth(L"ClickButton", {title, L"Dialog"})); // nor has the window itself
    EXPECT_FALSE(Truth(L"SetButtonCheckState", {title + L"x", L"Apply", true}));
    EXPECT_TRUE(program.Pending().empty()) << program.Pending().front();
}

TEST_F(WindowMgrTest, IsNotHeldUpByWindowsThatDoNotAnswer) {
    const std::wstring title = UniqueTitle(L"Hung");
    WindowProgram program({L"--title", title, L"--button", L"Press", L"--hang-after", L"1"});
    const OwnWindow ours(title + L" ours", OwnWindow::Thread::kHangs);
    ASSERT_TRUE(program.Expect("hanging"));
    const DWORD start = GetTickCount();
    EXPECT_EQ(1, Number(L"GetWindowState", {title + L"$"}));
    EXPECT_TRUE(Truth(L"SetWindowState", {2, L"^" + title}));
    EXPECT_TRUE(Truth(L"SetWindowState", {2, title + L" ours"}));
    EXPECT_EQ(title, Call(manager_.Get(), L"GetMatchingWindowTitleText", {L"^" + title}).Text());
    EXPECT_TRUE(Truth(L"ClickButton", {L"^" + title, L"Press"}));
    EXPECT_LT(GetTickCount() - start, kAtOnce);
}

TEST_F(WindowMgrTest, TakesNullTextsForEmptyOnes) {
    const auto manager = QueryFor<IWindowMgr>(manager_.Get());
    long state = 0; // a null text is empty, and an empty pattern matches every window
    EXPECT_EQ(S_OK, manager->GetWindowState(nullptr, nullptr, &state));
    EXPECT_NE(3, state);
    long wait = 0;
    EXPECT_EQ(S_OK,
              manager->WaitForWindow(nullptr, nullptr, INT_MIN, VARIANT_TRUE, INT_MAX, &wait));
    EXPECT_EQ(1, wait); // the refused ones took no number
    EXPECT_EQ(Ended(kOnWaitForWindow, 0), EndOf(wait));
    EXPECT_FALSE(Truth(L"ClickButton", {std::wstring(100000, L'a'), std::wstring(100000, L'(')}));
}

// Thrown in this program, through the library, whose run-time support is not this program's.
class ThrowingSink final : public RecordingSink {
    HRESULT OnEvent(DISPID) override { throw 1; }
};

TEST_F(WindowMgrTest, CallsEverySinkWhenOneThrows) {
    if (sizeof(void*) == 4) {
        GTEST_SKIP()
            << "the compiler's 32-bit exceptions cannot leave the module they are thrown in";
    }
    ThrowingSink throwing;
    RecordingSink last;
    Advise(manager_.Get(), &throwing);
    Advise(manager_.Get(), &last);
    Number(L"WaitForWindow", {UniqueTitle(L"Absent"), L"", 1, true, 1});
    EXPECT_TRUE(last.WaitFor(1, kLong));
    EXPECT_EQ(1u, throwing.Count());
    manager_.Reset();
    EXPECT_EQ(0, throwing.References());
}

TEST_F(WindowMgrTest, EndsItsWaitsInSilence) {
    const std::wstring absent = UniqueTitle(L"Absent");
    const OwnWindow present(UniqueTitle(L"Present"), OwnWindow::Thread::kPumps);
    for (int i = 0; i < 10; ++i) {
        Number(L"WaitForWindow", {absent, L"", kSlow});
        Number(L"WaitForWindowToComeAndGo", {L"Present", L"", kQuick});
        Number(L"WaitOnWindow", {absent, L"", kSlow});
    }
    const DWORD start = GetTickCount();
    manager_.Reset();
    EXPECT_LT(GetTickCount() - start, kAtOnce);
    EXPECT_EQ(0, sink_.References());
    EXPECT_FALSE(sink_.WaitFor(1, 300));
    EXPECT_EQ(S_OK, TestComponent::Get().CanUnloadNow());
}

// Drops the object's last reference inside the event.
class LastReleaser final : public RecordingSink {
public:
    explicit LastReleaser(ComPtr<IDispatch>& last) : last_(last) {}

protected:
    HRESULT OnEvent(DISPID) override {
        last_.Reset();
        return E_FAIL;
    }

private:
    ComPtr<IDispatch>& last_;
};

TEST_F(WindowMgrTest, MayBeReleasedForTheLastTimeInsideItsEvent) {
    const OwnWindow present(UniqueTitle(L"Present"), OwnWindow::Thread::kPumps);
    LastReleaser releaser(manager_);
    RecordingSink after; // the next in turn is called all the same
    Advise(manager_.Get(), &releaser);
    Advise(manager_.Get(), &after);
    Number(L"WaitForWindow", {UniqueTitle(L"Absent"), L"", kSlow});
    const long wait = Number(L"WaitForWindow", {L"Present", L"", kQuick});
    EXPECT_EQ(Ended(kOnWaitForWindow, 0), EndOf(wait));
    EXPECT_TRUE(releaser.WaitFor(1, kLong));
    EXPECT_TRUE(after.WaitFor(1, kLong));
    EXPECT_TRUE(PumpUntil(
        [&] { return sink_.References() + releaser.References() + after.References() == 0; },
        kLong));
    EXPECT_EQ(nullptr, manager_.Get());
    EXPECT_TRUE(PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kLong));
}

TEST_F(WindowMgrTest, LeavesNoHandlesBehindAfterAThousandWaits) {
    const std::wstring absent = UniqueTitle(L"Absent");
    const OwnWindow present(UniqueTitle(L"Present"), OwnWindow::Thread::kPumps);
    const auto round = [&](int waits) {
        ComPtr<IDispatch> manager = TestComponent::Get().Create(__uuidof(WindowMgr));
        RecordingSink sink;
        Advise(manager.Get(), &sink);
        for (int i = 0; i < waits; i += 4) {
            Call(manager.Get(), L"WaitForWindow", {L"Present", L"", kQuick});
            Call(manager.Get(), L"WaitForWindow", {absent, L"", 1, true, 1});
            const long aborted = Call(manager.Get(), L"WaitOnWindow", {L"Present"}).Number();
            Call(manager.Get(), L"AbortWait", {aborted});
            Call(manager.Get(), L"WaitForWindow", {absent, L"", kSlow}); // left to the release
            ASSERT_TRUE(sink.WaitFor(static_cast<size_t>(i / 4 * 3 + 3), kLong));
        }
        manager.Reset();
    };
    round(40);
    const size_t before = OpenHandleCount();
    ASSERT_NE(0u, before);
    for (int i = 0; i < 5; ++i) {
        round(200);
    }
    EXPECT_LE(OpenHandleCount(), before + 5);
}

TEST_F(WindowMgrTest, DrivesNotepad) {
    wchar_t command[] = L"notepad.exe";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    const long come = Number(L"WaitForWindow", {L"^Untitled - Notepad$", L"", kQuick, false});
    ASSERT_TRUE(CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &started));
    const ZelBase::UniqueHandle process(started.hProcess);
    const ZelBase::UniqueHandle thread(started.hThread);
    EXPECT_EQ(Ended(kOnWaitForWindow, 0), EndOf(come));
    EXPECT_EQ(L"Untitled - Notepad",
              Call(manager_.Get(), L"GetMatchingWindowTitleText", {L"- Notepad"}).Text());
    const long go = Number(L"WaitOnWindow", {L"- Notepad", L"", kQuick});
    EXPECT_TRUE(Truth(L"SetWindowState", {3, L"- Notepad"}));
    EXPECT_EQ(Ended(kOnWaitOnWindow, 0), EndOf(go));
    if (WaitForSingleObject(process.Get(), kLong) != WAIT_OBJECT_0) {
        TerminateProcess(process.Get(), 1);
        ADD_FAILURE() << "notepad did not close";
    }
}

} // namespace
} // namespace tervane::test
