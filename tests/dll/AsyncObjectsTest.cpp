// What all operations that end with an event have in common: one event, on the right thread,
// whatever becomes of the object and of its thread meanwhile; and nothing stays behind.

#include "support/LoopbackServer.h"
#include "support/ObjectTest.h"
#include "support/ProcessUsage.h"
#include "support/TestThreads.h"

namespace tervane::test {
namespace {

struct Operation {
    const char* name;
    const wchar_t* type;
    std::wstring method;
    std::vector<Argument> arguments;
    std::wstring answer;
    std::wstring event;
    bool onOwnThread;  // the event comes on the thread that made the object
    bool endsSilently; // the end of the object ends what runs
    std::function<void(IDispatch*)> prepare = {};
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

LoopbackServer& Server() {
    static LoopbackServer server;
    return server;
}

const Operation kOperations[] = {
    {"LookUp", L"ConnectivityTester", L"DNSLookup", {L"", 1}, L"empty", L"1(0s)", false, false},
    {"OpenPort",
     L"ConnectivityTester",
     L"TestTCPPort",
     {L"127.0.0.1", Server().Port(LoopbackServer::kSmtp), 20000},
     L"empty",
     L"2(-1s)",
     false,
     false},
    {"Ping", L"ConnectivityTester", L"Ping", {L"", 50, 1}, L"empty", L"3(0s)", false, false},
    {"Gather", L"GeneralSysInfo", L"GetSystemInfo", {}, L"empty", L"1()", true, false},
    {"Send",
     L"SmtpCtl",
     L"SendMail",
     {},
     L"other true",
     L"1(1, object)",
     true,
     false,
     [](IDispatch* smtp) { PrepareSmtp(smtp, Server()); }},
    {"Connect",
     L"PopCtl",
     L"Connect",
     {},
     L"true",
     L"1(1, object)",
     true,
     false,
     [](IDispatch* pop) { PreparePop(pop, Server()); }},
    {"Wait",
     L"WindowMgr",
     L"WaitForWindow",
     {L"^no$", L"", 1, true, 1},
     L"1",
     L"2(1, 1)",
     false,
     true},
    {"Adapters",
     L"AdapterInfo",
     L"GetAdapterInfo",
     {L"C4FEF9B0-0EF2-40E6-9474-36A915527057", 5},
     L"5",
     L"1(5, -1s)",
     true,
     true},
};

class AsyncObjectsTest : public testing::TestWithParam<Operation> {
protected:
    ~AsyncObjectsTest() override { EXPECT_TRUE(CanUnloadSoon()); }

    static ComPtr<IDispatch> Prepare(IUnknown& sink) {
        auto object = New(GetParam().type);
        if (GetParam().prepare) {
            GetParam().prepare(object.Get());
        }
        Advise(object.Get(), &sink);
        return object;
    }
    static void Start(IDispatch* object) {
        EXPECT_EQ(GetParam().answer, Ask(object, GetParam().method, GetParam().arguments));
    }
    // An object that has begun.
    static ComPtr<IDispatch> Begin(IUnknown& sink) {
        auto object = Prepare(sink);
        Start(object.Get());
        return object;
    }
    // Whether everybody forgets the sink.
    static bool IsLeft(RecordingSink& sink) {
        return PumpUntil(
            [&] {
                sink.Forget();
                return sink.References() == 0;
            },
            kPatience);
    }
    static bool IsSilent() { return GetParam().endsSilently; }

    const Apartment apartment_;
};

INSTANTIATE_TEST_SUITE_P(Operations, AsyncObjectsTest, testing::ValuesIn(kOperations),
                         [](const auto& info) { return info.param.name; });

TEST_P(AsyncObjectsTest, FiresOneEventWhateverStrangersPost) {
    RecordingSink sink;
    const auto object = Begin(sink);
    DisturbPostbackWindows();
    ASSERT_TRUE(sink.WaitFor(1, kPatience));
    DisturbPostbackWindows();
    PumpUntil([] { return false; }, 100);
    ASSERT_EQ(1u, sink.Count());
    EXPECT_EQ(GetParam().event, sink.Text(0));
    EXPECT_EQ(GetParam().onOwnThread, sink[0].thread == GetCurrentThreadId());
    sink.Forget();
}

TEST_P(AsyncObjectsTest, TellsItsEndWhenItWasDroppedUnlessItEndsWithTheObject) {
    RecordingSink sink;
    sink.onEvent = [](DISPID) {
        EXPECT_EQ(S_FALSE, TestComponent::Get().CanUnloadNow());
        return S_OK;
    };
    { const auto object = Begin(sink); }
    if (IsSilent()) {
        EXPECT_EQ(0, sink.References());
        EXPECT_FALSE(sink.WaitFor(1, 300));
        return;
    }
    ASSERT_TRUE(sink.WaitFor(1, kPatience));
    EXPECT_EQ(GetParam().event, sink.Text(0));
    EXPECT_TRUE(IsLeft(sink));
    EXPECT_EQ(1u, sink.Count());
}

TEST_P(AsyncObjectsTest, MayLoseItsLastReferenceInsideItsEvent) {
    RecordingSink dropping;
    RecordingSink next; // is called all the same
    auto object = Prepare(dropping);
    Advise(object.Get(), &next);
    const ZelBase::UniqueHandle started(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    dropping.onEvent = [&](DISPID) {
        WaitForSingleObject(started.Get(), kPatience); // else the call has the last reference
        dropping.Forget();
        object.Reset();
        return E_FAIL;
    };
    Start(object.Get());
    SetEvent(started.Get());
    EXPECT_TRUE(dropping.WaitFor(1, kPatience));
    EXPECT_TRUE(next.WaitFor(1, kPatience));
    EXPECT_TRUE(IsLeft(next) && IsLeft(dropping));
}

// The thread that made the object ends without looking for messages: at once, when the end has been
// posted to it, or with the object left to another thread.
TEST_P(AsyncObjectsTest, GoesWithItsThread) {
    for (const bool isPosted : {false, true}) {
        for (const bool isKept : {false, true}) {
            RecordingSink sink;
            ComPtr<IDispatch> kept;
            TestThread([&] {
                const Apartment apartment;
                auto object = Begin(sink);
                MSG message;
                while (isPosted && GetParam().onOwnThread &&
                       !PeekMessageA(&message, nullptr, WM_USER, 0x7FFF, PM_NOREMOVE)) {
                    Sleep(5);
                }
                if (isKept) {
                    kept = std::move(object);
                }
            }).join();
            kept.Reset();
            EXPECT_TRUE(IsLeft(sink)) << isPosted << isKept;
            EXPECT_TRUE(!GetParam().onOwnThread || sink.Count() == 0);
        }
    }
}

TEST_P(AsyncObjectsTest, LeavesNoHandles) {
    const auto live = [](int objects) {
        for (int i = 0; i < objects; ++i) {
            RecordingSink sink;
            auto object = Begin(sink);
            if (i % 3 == 0) {
                object.Reset();
            }
            EXPECT_TRUE((i % 3 == 0 && IsSilent()) || sink.WaitFor(1, kPatience));
            if (i % 3 == 1 && GetParam().answer != L"true") { // a mailbox stays open
                Ask(object.Get(), GetParam().method, GetParam().arguments);
                EXPECT_TRUE(sink.WaitFor(2, kPatience));
            }
            object.Reset();
            ASSERT_TRUE(IsLeft(sink)) << i;
        }
        EXPECT_TRUE(CanUnloadSoon());
    };
    live(6);
    PumpUntil([] { return false; }, 300); // threads end
    const std::size_t before = OpenHandleCount();
    ASSERT_NE(0u, before);
    live(60);
    EXPECT_TRUE(PumpUntil([&] { return OpenHandleCount() <= before + 3; }, kPatience))
        << OpenHandleCount() << " handles, before " << before;
}

} // namespace
} // namespace tervane::test
