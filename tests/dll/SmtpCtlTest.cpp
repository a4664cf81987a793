// SmtpCtl as scripts use it, with servers that follow a script.

#include "support/ScriptedServer.h"
#include "support/TestComponent.h"
#include "support/TestThreads.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <iterator>

namespace tervane::test {
namespace {

using namespace std::string_literals;

constexpr DWORD kPatience = 30000;

// What a server says at each step, after what the client has said.
struct Step {
    const char* command; // null: the server begins
    const char* reply;
    const wchar_t* refused;
    const wchar_t* closed;
    const wchar_t* silent;
};
constexpr Step kSteps[] = {
    {nullptr, "220 hello", L"SMTP_CONNECT_ERROR", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:EHLO *", "250 ok", L"SMTP_CONNECT_ERROR", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:AUTH LOGIN", "334 u", L"SMTP_CONNECT_ERROR", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:bWUh6Q==", "334 p", L"SMTP_AUTH_ERROR", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:c2VjcmV0Pw==", "235 ok", L"SMTP_AUTH_ERROR", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:MAIL From: <from@a.example>", "250 ok", L"SMTP_UNEXPECTED", L"SMTP_TERMINATED",
     L"SMTP_TIMEOUT_ERR"},
    {"C:RCPT TO: <to@b.example>", "250 ok", L"SMTP_UNEXPECTED", L"SMTP_TERMINATED",
     L"SMTP_TIMEOUT_ERR"},
    {"C:DATA", "354 go on", L"SMTP_UNEXPECTED", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"TEXT", "250 taken", L"SMTP_UNEXPECTED", L"SMTP_TERMINATED", L"SMTP_TIMEOUT_ERR"},
    {"C:QUIT", "221 bye", L"SMTP_SUCCESS", L"SMTP_SUCCESS", L"SMTP_SUCCESS"},
};
constexpr size_t kCount = std::size(kSteps);

// The conversation in which `fault` replaces the reply of one step and is the last that is said.
ScriptedServer::Script ScriptWith(size_t faultyStep = kCount, const std::string& fault = {}) {
    ScriptedServer::Script script;
    for (size_t i = 0; i < kCount; ++i) {
        if (kSteps[i].command) {
            script.push_back(kSteps[i].command);
        }
        if (i == faultyStep) {
            script.push_back(fault);
            return script;
        }
        script.push_back(std::string("S:") + kSteps[i].reply + "\r\n");
    }
    return script;
}

class SmtpCtlTest : public testing::Test {
protected:
    SmtpCtlTest() {
        Write(mail.Get(), L"From", L"Me <from@a.example>");
        Write(mail.Get(), L"To", L"\"x<y\" <to\uFF20b.example>"); // a full-width "@"
        Write(mail.Get(), L"Subject", L"\u4E2D");
        Write(mail.Get(), L"TextMessage", L"text \u00E9");
        Prepare();
    }
    ~SmtpCtlTest() override {
        ForgetEvents(*sink);
        smtp.Reset();
        mail.Reset();
        EXPECT_TRUE(
            PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
    }

    // Events carry their object, and so keep it.
    static void ForgetEvents(RecordingSink& recorded) {
        for (size_t i = 0; i < recorded.Count(); ++i) {
            recorded[i].arguments.clear();
        }
    }
    // A new object with the settings of the conversation.
    void Prepare() {
        smtp = TestComponent::Get().Create(__uuidof(::SmtpCtl));
        Write(smtp.Get(), L"SmtpServer", L"127.0.0.1");
        Write(smtp.Get(), L"Login", L"me!\u00E9");
        Write(smtp.Get(), L"Password", L"secret\u4E2D"); // no byte has that character: "?"
        Write(smtp.Get(), L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
        sink = std::make_unique<RecordingSink>();
        Advise(smtp.Get(), sink.get());
    }
    bool Send(int port) {
        Write(smtp.Get(), L"Port", port);
        return Call(smtp.Get(), L"SendMail").Number() == 1;
    }
    std::wstring Status() { return Read(smtp.Get(), L"StatusCode").Text(); }
    // Sends, and tells the status when the event has come; the event and the properties agree.
    std::wstring Outcome(int port) {
        EXPECT_TRUE(Send(port));
        EXPECT_NE(Read(smtp.Get(), L"WorkInProgress").Number(), 0);
        if (!sink->WaitFor(1, kPatience)) {
            return L"no event";
        }
        const std::wstring status = Status();
        ReceivedEvent& event = (*sink)[0];
        EXPECT_EQ(event.id, 1);
        EXPECT_EQ(event.thread, GetCurrentThreadId());
        EXPECT_EQ(event.arguments[0].Type(), VT_I4);
        EXPECT_EQ(event.arguments[0].Get().lVal, status == L"SMTP_SUCCESS" ? 1 : 0);
        EXPECT_EQ(event.arguments[1].Get().pdispVal, smtp.Get());
        EXPECT_EQ(Read(smtp.Get(), L"Success").Number(), event.arguments[0].Get().lVal);
        EXPECT_EQ(Read(smtp.Get(), L"WorkInProgress").Number(), 0);
        return status;
    }

    Apartment apartment;
    ComPtr<IDispatch> mail = TestComponent::Get().Create(__uuidof(::EmailData));
    std::unique_ptr<RecordingSink> sink;
    ComPtr<IDispatch> smtp;
};

TEST_F(SmtpCtlTest, BeginsWithItsDefaults) {
    const auto fresh = TestComponent::Get().Create(__uuidof(::SmtpCtl));
    EXPECT_EQ(Read(fresh.Get(), L"Port").Number(), 25);
    EXPECT_EQ(Read(fresh.Get(), L"Timeout").Number(), 30);
    EXPECT_EQ(Read(fresh.Get(), L"SmtpServer").Text(), L"");
    EXPECT_EQ(Read(fresh.Get(), L"WorkInProgress").Number(), 0);
    EXPECT_EQ(Read(fresh.Get(), L"Success").Number(), 0);
    EXPECT_EQ(Read(fresh.Get(), L"EmailData").value.Get().pdispVal, nullptr);
    EXPECT_EQ(Read(smtp.Get(), L"EmailData").value.Get().pdispVal, mail.Get());
    EXPECT_EQ(Read(smtp.Get(), L"Login").Text(), L"me!\u00E9");
    EXPECT_EQ(Call(fresh.Get(), L"Abort").Number(), 0);
    EXPECT_EQ(Call(fresh.Get(), L"SendMail").Number(), 0);
    EXPECT_EQ(Read(fresh.Get(), L"StatusCode").Text(), L"SMTP_INVALID_ARGS");
    EXPECT_EQ(Call(fresh.Get(), L"Abort").Number(), 0);
    EXPECT_EQ(Read(fresh.Get(), L"StatusCode").Text(), L"SMTP_INVALID_ARGS");
}

TEST_F(SmtpCtlTest, SendsTheMessageAsItWasWhenAsked) {
    ScriptedServer server({ScriptWith()});
    Call(mail.Get(), L"AddHeader", {L"X-Folded: one"});
    Call(mail.Get(), L"AddHeader", {L"\ttwo"});
    Call(mail.Get(), L"AddHeader", {L" X-Blank :  v "});
    for (const wchar_t* line :
         {L"", L" \r\n\t", L"X-Break: a\r\n\r\nBcc: b", L"\tgo\non: c", L"No Name: d", L"\tgone",
          L"X-A\r\nBcc: e", L"X-\u00E9: f", L"X:Y: g", L"nameless\n\rBcc:h", L"."}) {
        Call(mail.Get(), L"AddHeader", {line});
    }
    ASSERT_TRUE(Send(server.Port()));
    const std::wstring date = Read(mail.Get(), L"Date").Text();
    EXPECT_EQ(Read(mail.Get(), L"XMailer").Text(), L"<AnonymousMailer>");
    Write(mail.Get(), L"TextMessage", L"later");
    Write(mail.Get(), L"To", L"later@b.example");
    Write(smtp.Get(), L"SmtpServer", L"later");
    Write(smtp.Get(), L"EmailData", Variant::FromObject({}).Get());
    ASSERT_TRUE(sink->WaitFor(1, kPatience));
    EXPECT_EQ(Status(), L"SMTP_SUCCESS");
    EXPECT_EQ(server.Problems(), "");
    ASSERT_EQ(server.Texts().size(), 1u);
    EXPECT_EQ(server.Texts()[0],
              "From: Me <from@a.example>\r\nTo: \"x<y\" <to\xEF\xBC\xA0"
              "b.example>\r\nSubject: \xE4\xB8\xAD\r\nX-Folded: one\r\n\ttwo\r\nX-Blank: v\r\n"
              "X-Break: a Bcc: b\r\n\tgo on: c\r\nnameless Bcc:h\r\n..\r\nDate: " +
                  std::string(date.begin(), date.end()) +
                  "\r\nX-Mailer: <AnonymousMailer>\r\nMIME-Version: 1-0\r\n"
                  "Content-type: text/plain; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\ndGV4dCDDqQ==");
}

TEST_F(SmtpCtlTest, ComposesByTheBodiesThereAre) {
    const struct {
        const wchar_t* text;
        const wchar_t* html;
        const char* expected;
    } cases[] = {{L"", L"",
                  "Content-type: text/plain; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\n"},
                 {L"", L"h",
                  "Content-type: text/html; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\naA=="},
                 {L"t", L"h",
                  "\r\n\r\n--3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A6"
                  "5A3472\r\nContent-type: text/html; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\naA==\r\n"
                  "--3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472\r\n"
                  "Content-type: text/plain; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\ndA==\r\n"
                  "--3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472"
                  "--"}};
    for (const auto& row : cases) {
        ScriptedServer server({ScriptWith()});
        Write(mail.Get(), L"TextMessage", row.text);
        Write(mail.Get(), L"HtmlMessage", row.html);
        Prepare();
        EXPECT_EQ(Outcome(server.Port()), L"SMTP_SUCCESS");
        const std::string text = server.Texts().at(0);
        EXPECT_TRUE(text.ends_with(row.expected)) << text;
    }
}

TEST_F(SmtpCtlTest, NamesTheOutcomeOfEachStep) {
    for (size_t step = 0; step < kCount; ++step) {
        const std::pair<const char*, const wchar_t*> faults[] = {
            {"S:550 no\r\n", kSteps[step].refused},
            {"CLOSE", kSteps[step].closed},
            {"SILENCE", kSteps[step].silent}};
        for (const auto& [fault, status] : faults) {
            ScriptedServer server({ScriptWith(step, fault)});
            Prepare();
            Write(smtp.Get(), L"Timeout", 1);
            const DWORD start = GetTickCount();
            EXPECT_EQ(Outcome(server.Port()), status) << fault << " at " << step;
            EXPECT_LT(GetTickCount() - start, 4000u) << fault << " at " << step;
        }
    }
}

// Replies in advance may be taken for those of the commands that follow, or be lost: what matters
// is that there is one end, and in time.
TEST_F(SmtpCtlTest, ComesToAnEndWhenTheServerTalksAhead) {
    for (size_t step = 0; step < kCount; ++step) {
        std::string replies = "S:";
        for (size_t ahead = step; ahead < kCount; ++ahead) {
            replies += std::string(kSteps[ahead].reply) + "\r\n";
        }
        ScriptedServer server({ScriptWith(step, replies)});
        Prepare();
        Write(smtp.Get(), L"Timeout", 1);
        const DWORD start = GetTickCount();
        const std::wstring status = Outcome(server.Port());
        EXPECT_TRUE(status == L"SMTP_SUCCESS" || status == L"SMTP_TIMEOUT_ERR") << status << step;
        EXPECT_LT(GetTickCount() - start, 4000u) << step;
        PumpUntil([] { return false; }, 20);
        EXPECT_EQ(sink->Count(), 1u) << step;
    }
}

TEST_F(SmtpCtlTest, SendsLongHeadersAndBrokenCharactersAsTheyAre) {
    ScriptedServer server({ScriptWith()});
    const std::wstring longText(1 << 20, L'h');
    Call(mail.Get(), L"AddHeader", {L"X-Long: " + longText});
    Write(mail.Get(), L"Subject", L"a\xD800z\xDC00");
    Write(mail.Get(), L"TextMessage", L"\xDBFF");
    EXPECT_EQ(Outcome(server.Port()), L"SMTP_SUCCESS");
    const std::string text = server.Texts().at(0);
    EXPECT_NE(text.find("X-Long: " + std::string(longText.size(), 'h') + "\r\n"),
              std::string::npos);
    // Half a character is the sign for one that cannot be shown.
    EXPECT_NE(text.find("Subject: a\xEF\xBF\xBDz\xEF\xBF\xBD\r\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\r\n\r\n77+9")) << text.substr(text.size() - 40);
}

TEST_F(SmtpCtlTest, LeavesOutAuthenticationWithoutPassword) {
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO *", "S:250 ok\r\n", "C:MAIL*", "S:550 no\r\n",
                            "C:QUIT", "S:221 bye\r\n"}});
    Write(smtp.Get(), L"Password", L"");
    EXPECT_EQ(Outcome(server.Port()), L"SMTP_UNEXPECTED");
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(SmtpCtlTest, NamesWhatIsWrongWithSettings) {
    const struct {
        const wchar_t* server;
        int port;
        const wchar_t* status;
    } cases[] = {
        {L"", 25, L"SMTP_INVALID_STATE"},          {L" \t\r\n", 25, L"SMTP_INVALID_STATE"},
        {L"127.0.0.1", 0, L"SMTP_INVALID_STATE"},  {L"127.0.0.1", 65536, L"SMTP_INVALID_STATE"},
        {L"127.0.0.1", -1, L"SMTP_INVALID_STATE"}, {L"127.0.0.1", 1, L"SMTP_CONNECT_ERROR"}};
    for (const auto& row : cases) {
        Prepare();
        Write(smtp.Get(), L"SmtpServer", row.server);
        EXPECT_EQ(Outcome(row.port), row.status) << row.port;
    }
    ScriptedServer server({{"SILENCE"}, {"SILENCE"}});
    for (int timeout : {0, -1}) {
        Prepare();
        Write(smtp.Get(), L"Timeout", timeout);
        EXPECT_EQ(Outcome(server.Port()), L"SMTP_TIMEOUT_ERR") << timeout;
    }
}

TEST_F(SmtpCtlTest, TakesAddressesThatCannotBeSentAsRefused) {
    ScriptedServer::Script script = ScriptWith(5, "C:QUIT");
    script.erase(script.end() - 2); // MAIL
    script.push_back("S:221 bye\r\n");
    for (const wchar_t* property : {L"From", L"To"}) {
        for (const std::wstring& address :
             {L"a@b\r\nDATA"s, L"A <a@b\n>"s, L"a b@c"s, L"<a\uFF1Cb@c>"s, L"a@b\uFF1E"s,
              L"a\x7F@b"s, L"a@b\x85"s, L"a@b\0c"s}) {
            Write(mail.Get(), property, address);
            Prepare();
            ScriptedServer server({script});
            EXPECT_EQ(Outcome(server.Port()), L"SMTP_UNEXPECTED") << address;
            EXPECT_EQ(server.Problems(), "");
        }
        Write(mail.Get(), property, L"a@b");
    }
}

TEST_F(SmtpCtlTest, RefusesCredentialsOfSeveralLines) {
    for (const wchar_t* property : {L"Login", L"Password"}) {
        for (const wchar_t separator : {L'\r', L'\n', L'\0'}) {
            Prepare();
            Write(smtp.Get(), property, std::wstring(L"a") + separator + L"b");
            EXPECT_FALSE(Send(25));
            EXPECT_EQ(Status(), L"SMTP_INVALID_ARGS");
            EXPECT_EQ(sink->Count(), 0u);
        }
    }
}

TEST_F(SmtpCtlTest, IsBusyUntilTheEvent) {
    Write(smtp.Get(), L"SmtpServer", L""); // fails at once
    EXPECT_TRUE(Send(25));
    EXPECT_FALSE(Send(25));
    EXPECT_EQ(Status(), L"SMTP_BUSY_WORKING");
    ASSERT_TRUE(sink->WaitFor(1, kPatience));
    EXPECT_EQ(Status(), L"SMTP_INVALID_STATE");
    EXPECT_TRUE(Send(25));
    ASSERT_TRUE(sink->WaitFor(2, kPatience));
}

TEST_F(SmtpCtlTest, IsAbortedAtEachStep) {
    for (size_t step = 0; step < kCount; ++step) {
        ScriptedServer server({ScriptWith(step, "SILENCE")});
        Prepare();
        ASSERT_TRUE(Send(server.Port()));
        Sleep(50 + 30 * static_cast<DWORD>(step));
        EXPECT_EQ(Call(smtp.Get(), L"Abort").Number(), VARIANT_TRUE);
        ASSERT_TRUE(sink->WaitFor(1, kPatience)) << step;
        EXPECT_TRUE(Status() == L"SMTP_ABORTED" ||
                    (step + 1 == kCount && Status() == L"SMTP_SUCCESS"))
            << step;
        EXPECT_EQ(Call(smtp.Get(), L"Abort").Number(), 0);
    }
}

// Sends again from inside the event, and drops the object when that has ended.
class ResendingSink final : public RecordingSink {
public:
    explicit ResendingSink(ComPtr<IDispatch>& object) : object_(object) {}

protected:
    HRESULT OnEvent(DISPID) override {
        if (Count() == 1) {
            EXPECT_EQ(Call(object_.Get(), L"SendMail").Number(), 1);
            EXPECT_EQ(Call(object_.Get(), L"SendMail").Number(), 0);
        } else {
            object_.Reset();
        }
        return S_OK;
    }

private:
    ComPtr<IDispatch>& object_;
};

TEST_F(SmtpCtlTest, MayBeUsedAndDroppedInsideItsEvent) {
    ScriptedServer server({ScriptWith(), ScriptWith()});
    ResendingSink resending(smtp);
    Advise(smtp.Get(), &resending);
    ASSERT_TRUE(Send(server.Port()));
    EXPECT_TRUE(resending.WaitFor(2, kPatience));
    EXPECT_EQ(server.Problems(), "");
    ForgetEvents(resending);
    ForgetEvents(*sink);
    EXPECT_TRUE(PumpUntil([&] { return resending.References() == 0; }, kPatience));
}

TEST_F(SmtpCtlTest, StillTellsTheEndWhenItWasDropped) {
    for (const size_t step : {size_t(0), size_t(4), size_t(8), kCount}) {
        ScriptedServer server({ScriptWith(step, "SILENCE")});
        Prepare();
        Write(smtp.Get(), L"Timeout", 1);
        ASSERT_TRUE(Send(server.Port()));
        if (step < kCount) {
            DisturbPostbackWindows();
            EXPECT_FALSE(Send(server.Port()));
            EXPECT_EQ(Status(), L"SMTP_BUSY_WORKING");
        }
        smtp.Reset();
        ASSERT_TRUE(sink->WaitFor(1, kPatience)) << step;
        EXPECT_EQ((*sink)[0].arguments[0].Get().lVal, step + 1 >= kCount ? 1 : 0);
        ForgetEvents(*sink);
        EXPECT_TRUE(PumpUntil([&] { return sink->References() == 0; }, kPatience)) << step;
    }
}

TEST_F(SmtpCtlTest, OutlivesAThreadThatDoesNotWaitForIt) {
    ScriptedServer server({ScriptWith()});
    TestThread script([&] {
        const Apartment other;
        const auto own = TestComponent::Get().Create(__uuidof(::SmtpCtl));
        const auto message = TestComponent::Get().Create(__uuidof(::EmailData));
        Write(own.Get(), L"SmtpServer", L"127.0.0.1");
        Write(own.Get(), L"Port", server.Port());
        Write(own.Get(), L"EmailData", Variant::FromObject(AddReference(message.Get())).Get());
        EXPECT_EQ(Call(own.Get(), L"SendMail").Number(), 1);
    });
    script.join();
}

} // namespace
} // namespace tervane::test
