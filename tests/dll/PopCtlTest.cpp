// PopCtl as scripts use it, with servers that follow a script.

#include "support/ScriptedServer.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <functional>
#include <iterator>

namespace tervane::test {
namespace {

constexpr DWORD kPatience = 30000;
enum Event : DISPID { kConnect = 1, kCount, kRetrieve, kDelete, kDisconnect };

using Script = ScriptedServer::Script;
const Script kLogin = {"S:+OK hi\r\n", "C:USER me\xE9", "S:+OK\r\n", "C:PASS !x", "S:+OK\r\n"};

Script AfterLogin(const Script& more) {
    Script script = kLogin;
    script.insert(script.end(), more.begin(), more.end());
    return script;
}

class PopCtlTest : public testing::Test {
protected:
    PopCtlTest() { Prepare(); }
    ~PopCtlTest() override {
        Forget();
        pop.Reset();
        EXPECT_TRUE(
            PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    }

    void Prepare() {
        Forget();
        pop = TestComponent::Get().Create(__uuidof(::PopCtl));
        Write(pop.Get(), L"PopServer", L"127.0.0.1");
        Write(pop.Get(), L"Login", L"me\u00E9");
        Write(pop.Get(), L"Password", L"\uFF01\uFF58"); // full-width "!x"
        sink = std::make_unique<RecordingSink>();
        Advise(pop.Get(), sink.get());
    }
    // Events carry their object, and so keep it.
    void Forget() {
        for (size_t i = 0; sink && i < sink->Count(); ++i) {
            (*sink)[i].arguments.clear();
        }
    }
    bool Do(const wchar_t* method, std::initializer_list<Argument> arguments = {}) {
        return Call(pop.Get(), method, arguments).Number() == VARIANT_TRUE;
    }
    bool Connect(const ScriptedServer& server) {
        Write(pop.Get(), L"Port", server.Port());
        return Do(L"Connect");
    }
    std::wstring Error() { return Read(pop.Get(), L"LastError").Text(); }
    long IsConnected() { return Read(pop.Get(), L"Connected").Number(); }
    // Waits for the next event and returns its first argument.
    long Next(Event event) {
        const size_t index = seen_++;
        if (!sink->WaitFor(index + 1, kPatience)) {
            return -1000;
        }
        ReceivedEvent& received = (*sink)[index];
        EXPECT_EQ(received.id, event);
        EXPECT_EQ(received.thread, GetCurrentThreadId());
        EXPECT_EQ(received.arguments.back().Get().pdispVal, pop.Get());
        EXPECT_EQ(received.arguments.size(), event == kDelete ? 3u : 2u);
        EXPECT_EQ(received.arguments[0].Type(), VT_I4);
        return received.arguments[0].Get().lVal;
    }
    void LogIn(const ScriptedServer& server) {
        seen_ = 0;
        ASSERT_TRUE(Connect(server));
        ASSERT_EQ(Next(kConnect), 1);
        ASSERT_EQ(IsConnected(), 1);
    }

    Apartment apartment;
    std::unique_ptr<RecordingSink> sink;
    ComPtr<IDispatch> pop;
    size_t seen_ = 0;
};

TEST_F(PopCtlTest, BeginsWithItsDefaults) {
    const auto fresh = TestComponent::Get().Create(__uuidof(::PopCtl));
    EXPECT_EQ(Read(fresh.Get(), L"Port").Number(), 110);
    EXPECT_EQ(Read(fresh.Get(), L"Timeout").Number(), 30);
    EXPECT_EQ(Read(fresh.Get(), L"Connected").Number(), 0);
    EXPECT_EQ(Read(fresh.Get(), L"LastError").Text(), L"POP_SUCCESS");
    EXPECT_EQ(Read(fresh.Get(), L"EmailData").value.Get().pdispVal, nullptr);
    EXPECT_EQ(Read(pop.Get(), L"Password").Text(), L"\uFF01\uFF58");
    for (const wchar_t* method : {L"GetMailCount", L"Disconnect", L"AbortCurrentAction"}) {
        EXPECT_EQ(Call(fresh.Get(), method).Number(), 0);
        EXPECT_EQ(Read(fresh.Get(), L"LastError").Text(), L"POP_NOT_YET_CONNECTED") << method;
    }
    EXPECT_EQ(Call(fresh.Get(), L"RetrieveMessage", {1}).Number(), 0);
    EXPECT_EQ(Call(fresh.Get(), L"DeleteMessage", {1}).Number(), 0);
}

TEST_F(PopCtlTest, ReadsAMailbox) {
    ScriptedServer server({AfterLogin(
        {"C:STAT", "S:+OK 2 999\r\n", "C:RETR 1",
         "S:+OK\r\nSubject: a\r\n\tb\r\nX: \xC3\xA9\r\nY: \xE9\r\n\r\nline\r\n\r\n..\r\n"
         "\xE4\xB8\xAD\r\n.\r\n",
         "C:RETR 7", "S:+OK\r\nonly: headers\r\n.\r\n", "C:RETR 0", "S:-ERR none\r\n", "C:DELE 2",
         "S:+OK\r\n", "C:DELE -2147483648", "S:-ERR what\r\n", "C:QUIT", "S:+OK\r\n", "CLOSE"})});
    EXPECT_TRUE(PostbackWindows().empty()); // the first operation makes it
    LogIn(server);
    EXPECT_EQ(PostbackWindows().size(), 1u);
    EXPECT_FALSE(Do(L"Connect"));
    EXPECT_EQ(Error(), L"POP_ALREADY_CONNECTED");
    EXPECT_TRUE(Do(L"GetMailCount"));
    EXPECT_EQ(Next(kCount), 2);
    EXPECT_EQ(Error(), L"POP_SUCCESS");

    EXPECT_TRUE(Do(L"RetrieveMessage", {1}));
    EXPECT_EQ(Next(kRetrieve), 1);
    EXPECT_EQ(Read(pop.Get(), L"CurrentMessageIndex").Number(), 1);
    const CallResult first = Read(pop.Get(), L"EmailData");
    IDispatch* mail = first.value.Get().pdispVal;
    ASSERT_TRUE(mail);
    EXPECT_EQ(Read(mail, L"NumHeaders").Number(), 4);
    EXPECT_EQ(Call(mail, L"GetHeader", {1}).Text(), L"\tb"); // not unfolded
    EXPECT_EQ(Call(mail, L"GetHeaderByName", {L"x"}).Text(), L"\u00E9");
    EXPECT_EQ(Call(mail, L"GetHeaderByName", {L"y"}).Text(), L"\u00E9");
    EXPECT_EQ(Read(mail, L"TextMessage").Text(), L"line\r\n\r\n..\r\n\u4E2D");
    EXPECT_EQ(Read(mail, L"HtmlMessage").Text(), L"");

    EXPECT_TRUE(Do(L"RetrieveMessage", {7}));
    EXPECT_EQ(Next(kRetrieve), 1);
    EXPECT_EQ(Read(mail, L"Subject").Text(), L"a"); // the next message is another object
    EXPECT_EQ(Call(Read(pop.Get(), L"EmailData").value.Get().pdispVal, L"GetHeader", {0}).Text(),
              L"only: headers");
    EXPECT_TRUE(Do(L"RetrieveMessage", {0}));
    EXPECT_EQ(Next(kRetrieve), 0);
    EXPECT_EQ(Error(), L"POP_UNEXPECTED");
    EXPECT_EQ(Read(pop.Get(), L"CurrentMessageIndex").Number(), 7);

    EXPECT_TRUE(Do(L"DeleteMessage", {2}));
    EXPECT_EQ(Next(kDelete), 1);
    EXPECT_EQ((*sink)[5].arguments[1].Get().lVal, 2);
    EXPECT_TRUE(Do(L"DeleteMessage", {INT_MIN}));
    EXPECT_EQ(Next(kDelete), 0);
    EXPECT_TRUE(Do(L"Disconnect"));
    EXPECT_EQ(Next(kDisconnect), 1);
    EXPECT_EQ(IsConnected(), 0);
    EXPECT_EQ(Error(), L"POP_SUCCESS");
    EXPECT_EQ(server.Problems(), "");
    EXPECT_FALSE(Do(L"GetMailCount"));
    EXPECT_EQ(Error(), L"POP_NOT_YET_CONNECTED");
}

TEST_F(PopCtlTest, NamesWhatKeepsItFromLoggingIn) {
    const struct {
        std::vector<std::string> reply; // the last thing that is said
        size_t step;
        const wchar_t* error;
    } cases[] = {{{"S:-ERR no\r\n"}, 0, L"POP_CONNECT_ERROR"},
                 {{"CLOSE"}, 0, L"POP_TERMINATED"},
                 {{"SILENCE"}, 0, L"POP_TIMEOUT"},
                 {{"S:-ERR no\r\n"}, 2, L"POP_AUTH_ERROR"},
                 {{"RESET"}, 2, L"POP_TERMINATED"},
                 {{"SILENCE"}, 2, L"POP_TIMEOUT"},
                 {{"S:\r\n"}, 4, L"POP_AUTH_ERROR"},
                 {{"CLOSE"}, 4, L"POP_TERMINATED"},
                 {{"SILENCE"}, 4, L"POP_TIMEOUT"}};
    for (const auto& row : cases) {
        Script script = AfterLogin({});
        script.resize(row.step);
        script.insert(script.end(), row.reply.begin(), row.reply.end());
        ScriptedServer server({script, AfterLogin({"SILENCE"})});
        Prepare();
        Write(pop.Get(), L"Timeout", 1);
        seen_ = 0;
        EXPECT_TRUE(Connect(server));
        EXPECT_EQ(Next(kConnect), 0);
        EXPECT_EQ(Error(), row.error) << row.reply[0] << row.step;
        EXPECT_EQ(IsConnected(), 0);
        EXPECT_TRUE(Connect(server)); // the same object can try again
        EXPECT_EQ(Next(kConnect), 1) << row.reply[0] << row.step;
    }
}

TEST_F(PopCtlTest, NamesWhatIsWrongWithSettings) {
    const struct {
        const wchar_t* property;
        Argument value;
        const wchar_t* error;
    } cases[] = {{L"PopServer", L"", L"POP_INVALID_STATE"},
                 {L"Login", L"", L"POP_INVALID_STATE"},
                 {L"Password", L"", L"POP_INVALID_STATE"},
                 {L"Login", L"me\r\nDELE 1", L"POP_INVALID_ARGS"},
                 {L"Password", L"x\n", L"POP_INVALID_ARGS"},
                 {L"Password", std::wstring(L"x\0y", 3), L"POP_INVALID_ARGS"},
                 {L"PopServer", L" \t", L"POP_INVALID_STATE"},
                 {L"Port", 0, L"POP_INVALID_STATE"},
                 {L"Port", 65536, L"POP_INVALID_STATE"},
                 {L"Port", 1, L"POP_CONNECT_ERROR"},
                 {L"Timeout", -1, L"POP_TIMEOUT"}};
    ScriptedServer server({{"SILENCE"}});
    for (const auto& row : cases) {
        Prepare();
        Write(pop.Get(), L"Port", server.Port());
        Write(pop.Get(), row.property, row.value);
        seen_ = 0;
        EXPECT_TRUE(Do(L"Connect"));
        EXPECT_EQ(Next(kConnect), 0);
        EXPECT_EQ(Error(), row.error) << std::wstring(row.property);
    }
}

TEST_F(PopCtlTest, EndsAnOperationThatTheServerDoesNotFinish) {
    const struct {
        const wchar_t* method;
        bool takesIndex;
        Event event;
        const char* halfReply;
    } operations[] = {{L"GetMailCount", false, kCount, "S:+OK 3"},
                      {L"RetrieveMessage", true, kRetrieve, "S:+OK\r\nA: b\r\n\r\nbody\r\n"},
                      {L"DeleteMessage", true, kDelete, "S:"},
                      {L"Disconnect", false, kDisconnect, "S:"}};
    const std::pair<const char*, const wchar_t*> ends[] = {{"CLOSE", L"POP_TERMINATED"},
                                                           {"SILENCE", L"POP_TIMEOUT"}};
    for (const auto& operation : operations) {
        for (const auto& [end, error] : ends) {
            ScriptedServer server({AfterLogin({"C:*", operation.halfReply, end})});
            Prepare();
            LogIn(server);
            Write(pop.Get(), L"Timeout", 1);
            EXPECT_TRUE(operation.takesIndex ? Do(operation.method, {3}) : Do(operation.method));
            EXPECT_FALSE(Do(L"GetMailCount"));
            EXPECT_EQ(Next(operation.event), 0);
            EXPECT_EQ(Error(), error) << operation.method;
            EXPECT_EQ(IsConnected(), 0);
        }
    }
}

TEST_F(PopCtlTest, NoticesThatAnIdleConnectionHasEnded) {
    ScriptedServer server({AfterLogin({"CLOSE"}), AfterLogin({"SILENCE"})});
    ASSERT_TRUE(Connect(server));
    ASSERT_EQ(Next(kConnect), 1);
    EXPECT_TRUE(PumpUntil([&] { return IsConnected() == 0; }, kPatience));
    EXPECT_FALSE(Do(L"GetMailCount"));
    EXPECT_EQ(Error(), L"POP_NOT_YET_CONNECTED");
    EXPECT_TRUE(Connect(server));
    EXPECT_EQ(Next(kConnect), 1);
}

TEST_F(PopCtlTest, IsBusyUntilTheEventAndKeepsItsClient) {
    ScriptedServer server({{"WAIT:200", "S:+OK\r\n", "C:USER*", "S:+OK\r\n", "C:PASS*", "S:+OK\r\n",
                            "C:STAT", "WAIT:100", "S:+OK 1 1\r\n"}});
    EXPECT_TRUE(Connect(server));
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(Do(L"Connect"));
        EXPECT_EQ(Error(), L"POP_BUSY_WORKING");
        EXPECT_FALSE(Do(L"GetMailCount"));
        EXPECT_EQ(Error(), L"POP_NOT_YET_CONNECTED");
        DisturbPostbackWindows();
    }
    EXPECT_EQ(Next(kConnect), 1);
    EXPECT_TRUE(Do(L"GetMailCount"));
    DisturbPostbackWindows();
    EXPECT_FALSE(Do(L"DeleteMessage", {1}));
    EXPECT_EQ(Error(), L"POP_BUSY_WORKING");
    EXPECT_FALSE(Do(L"Connect"));
    EXPECT_EQ(Error(), L"POP_ALREADY_CONNECTED");
    EXPECT_EQ(Next(kCount), 1);
    EXPECT_EQ(Error(), L"POP_SUCCESS");
}

TEST_F(PopCtlTest, AbortsWhatRunsAndClosesTheConnection) {
    ScriptedServer server({AfterLogin({"C:RETR*", "S:+OK\r\nA: b\r\n", "SILENCE"}),
                           {"SILENCE"},
                           AfterLogin({"SILENCE"})});
    LogIn(server);
    EXPECT_TRUE(Do(L"RetrieveMessage", {1}));
    EXPECT_TRUE(Do(L"AbortCurrentAction"));
    EXPECT_EQ(IsConnected(), 0);
    EXPECT_EQ(Next(kRetrieve), 0);
    EXPECT_EQ(Error(), L"POP_TERMINATED");
    EXPECT_FALSE(Do(L"AbortCurrentAction"));
    EXPECT_EQ(Error(), L"POP_NOT_YET_CONNECTED");

    EXPECT_TRUE(Connect(server)); // while it is not logged in yet
    EXPECT_TRUE(Do(L"AbortCurrentAction"));
    EXPECT_EQ(Next(kConnect), 0);
    EXPECT_EQ(Error(), L"POP_TERMINATED");

    EXPECT_TRUE(Connect(server)); // while nothing runs
    EXPECT_EQ(Next(kConnect), 1);
    const size_t events = sink->Count();
    EXPECT_TRUE(Do(L"AbortCurrentAction"));
    EXPECT_EQ(Error(), L"POP_TERMINATED");
    EXPECT_EQ(IsConnected(), 0);
    EXPECT_EQ(server.Problems(), ""); // ends when all connections are closed
    EXPECT_EQ(sink->Count(), events);
}

// Does with the object in its event what the test wants.
class ActingSink final : public RecordingSink {
public:
    explicit ActingSink(std::function<void(DISPID)> action) : action_(std::move(action)) {}

protected:
    HRESULT OnEvent(DISPID event) override {
        action_(event);
        return S_OK;
    }

private:
    std::function<void(DISPID)> action_;
};

TEST_F(PopCtlTest, MayBeUsedAndDroppedInsideItsEvents) {
    ScriptedServer server(
        {AfterLogin({"C:STAT", "S:+OK 1 1\r\n", "C:RETR*", "S:+OK\r\nA: b\r\n\r\nx\r\n.\r\n"})});
    ActingSink acting([this](DISPID event) {
        if (event == kConnect) {
            EXPECT_TRUE(Do(L"GetMailCount"));
        } else if (event == kCount) {
            EXPECT_TRUE(Do(L"RetrieveMessage", {1}));
            EXPECT_FALSE(Do(L"Connect"));
        } else {
            EXPECT_TRUE(Do(L"AbortCurrentAction"));
            pop.Reset();
        }
    });
    Advise(pop.Get(), &acting);
    ASSERT_TRUE(Connect(server));
    EXPECT_TRUE(acting.WaitFor(3, kPatience));
    Forget();
    for (size_t i = 0; i < acting.Count(); ++i) {
        acting[i].arguments.clear();
    }
    EXPECT_TRUE(PumpUntil([&] { return acting.References() == 0; }, kPatience));
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(PopCtlTest, ClosesItsConnectionWhenItIsDropped) {
    ScriptedServer server({AfterLogin({"SILENCE"}), {"SILENCE"}});
    LogIn(server);
    Forget();
    pop.Reset();
    Prepare();
    Write(pop.Get(), L"Timeout", 1);
    seen_ = 0;
    ASSERT_TRUE(Connect(server));
    pop.Reset(); // still tells the end
    EXPECT_EQ(sink->WaitFor(1, kPatience), true);
    EXPECT_EQ((*sink)[0].arguments[0].Get().lVal, 0);
    Forget();
    EXPECT_EQ(server.Problems(), "");
}

} // namespace
} // namespace tervane::test
