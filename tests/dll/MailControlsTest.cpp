// SmtpCtl and PopCtl as scripts use them, with servers that follow a script.

#include "support/ObjectTest.h"
#include "support/ScriptedServer.h"

#include <iterator>

namespace tervane::test {
namespace {

using namespace std::string_literals;
using Script = ScriptedServer::Script;

// What a server says at each step, after what the client has said, and what a refusal there means.
struct Step {
    const char* command; // null: the server begins
    const char* reply;
    const wchar_t* refused;
};
constexpr Step kSending[] = {
    {nullptr, "220 hello", L"SMTP_CONNECT_ERROR"},
    {"C:EHLO *", "250 ok", L"SMTP_CONNECT_ERROR"},
    {"C:AUTH LOGIN", "334 u", L"SMTP_CONNECT_ERROR"},
    {"C:bWUh6Q==", "334 p", L"SMTP_AUTH_ERROR"},
    {"C:c2VjcmV0Pw==", "235 ok", L"SMTP_AUTH_ERROR"},
    {"C:MAIL From: <from@a.example>", "250 ok", L"SMTP_UNEXPECTED"},
    {"C:RCPT TO: <to@b.example>", "250 ok", L"SMTP_UNEXPECTED"},
    {"C:DATA", "354 go on", L"SMTP_UNEXPECTED"},
    {"TEXT", "250 taken", L"SMTP_UNEXPECTED"},
    {"C:QUIT", "221 bye", L"SMTP_SUCCESS"},
};
constexpr std::size_t kSent = std::size(kSending);
constexpr Step kLogin[] = {
    {nullptr, "+OK hi", L"POP_CONNECT_ERROR"},
    {"C:USER me\xE9", "+OK", L"POP_AUTH_ERROR"},
    {"C:PASS !x", "+OK", L"POP_AUTH_ERROR"},
};

// The conversation up to the step at which `rest` replaces the reply, or the whole and `rest`.
template <std::size_t Count>
Script Talk(const Step (&steps)[Count], const Script& rest = {}, std::size_t end = Count) {
    Script script;
    for (std::size_t i = 0; i < Count && i <= end; ++i) {
        if (steps[i].command) {
            script.push_back(steps[i].command);
        }
        if (i < end) {
            script.push_back("S:"s + steps[i].reply + "\r\n");
        }
    }
    script.insert(script.end(), rest.begin(), rest.end());
    return script;
}

class MailTest : public ObjectTest {
protected:
    MailTest(const wchar_t* name, const wchar_t* status, std::vector<Exchange> settings)
        : ObjectTest(name), name_(name), status_(status), settings_(std::move(settings)) {
        Answers(settings_);
    }
    // A new object with the settings of the conversation.
    void Renew() {
        sink_.Forget();
        object_ = New(name_);
        Answers(settings_);
        Advise(object_.Get(), &sink_);
    }
    void Set(const wchar_t* property, const Argument& value) {
        EXPECT_EQ(S_OK, Write(object_.Get(), property, value).status);
    }
    std::wstring Status() { return Ask(status_); }
    // Runs an operation to its end: the event and what the object says then.
    std::wstring Outcome(const wchar_t* method, const std::vector<Argument>& arguments = {}) {
        EXPECT_NE(L"false", Ask(method, arguments)) << testing::PrintToString(Status());
        const std::wstring event = Event();
        if (event == L"none") {
            return event;
        }
        EXPECT_EQ(GetCurrentThreadId(), sink_[seen_ - 1].thread);
        EXPECT_EQ(object_.Get(), sink_[seen_ - 1].arguments.back().Get().pdispVal);
        return event + L" " + Status();
    }

private:
    const wchar_t* const name_;
    const wchar_t* const status_;
    const std::vector<Exchange> settings_;
};

class SmtpCtlTest : public MailTest {
protected:
    SmtpCtlTest() : SmtpCtlTest(New(L"EmailData")) {}
    explicit SmtpCtlTest(const ComPtr<IDispatch>& mail)
        : MailTest(L"SmtpCtl", L"StatusCode",
                   {{L"SmtpServer=", {L"127.0.0.1"}},
                    {L"Login=", {L"me!\u00E9"}},
                    {L"Password=", {L"secret\u4E2D"}}, // no byte has that character: "?"
                    {L"EmailData=", {mail}}}),
          mail_(AddReference(mail.Get())) {
        Compose({{L"From=", {L"Me <from@a.example>"}},
                 {L"To=", {L"\"x<y\" <to\uFF20b.example>"}}, // a full-width "@"
                 {L"Subject=", {L"\u4E2D"}},
                 {L"TextMessage=", {L"text \u00E9"}}});
    }
    ~SmtpCtlTest() override { mail_.Reset(); }

    void Compose(const std::vector<Exchange>& exchanges) { ExpectAnswers(mail_.Get(), exchanges); }
    // Sends to a server that talks so; the status.
    std::wstring Send(const Script& script) {
        ScriptedServer server({script});
        const std::wstring status = SendTo(server.Port());
        problems_ = server.Problems();
        text_ = server.Texts().empty() ? "" : server.Texts()[0];
        return status;
    }
    std::wstring SendTo(int port) {
        Set(L"Port", port);
        const std::wstring outcome = Outcome(L"SendMail");
        const bool success = outcome.ends_with(L"SMTP_SUCCESS");
        EXPECT_TRUE(outcome.starts_with(success ? L"1(1, object) " : L"1(0, object) ")) << outcome;
        Answers({{L"Success", {}, success ? L"1" : L"0"}, {L"WorkInProgress", {}, L"0"}});
        return Status();
    }

    ComPtr<IDispatch> mail_;
    std::string problems_;
    std::string text_;
};

TEST_F(SmtpCtlTest, BeginsWithItsDefaults) {
    object_ = New(L"SmtpCtl");
    Answers({{L"Port", {}, L"25"},
             {L"Timeout", {}, L"30"},
             {L"SmtpServer", {}, L""},
             {L"WorkInProgress", {}, L"0"},
             {L"Success", {}, L"0"},
             {L"EmailData", {}, L"nothing"},
             {L"Abort", {}, L"false"},
             {L"SendMail", {}, L"false"},
             {L"StatusCode", {}, L"SMTP_INVALID_ARGS"},
             {L"Abort", {}, L"false"},
             {L"StatusCode", {}, L"SMTP_INVALID_ARGS"},
             {L"Login=", {L"me!\u00E9"}},
             {L"Login", {}, L"me!\u00E9"}});
    // What VBScript's Set does.
    EXPECT_EQ(S_OK, Invoke(object_.Get(), L"EmailData", DISPATCH_PROPERTYPUTREF, {mail_}).status);
    EXPECT_EQ(mail_.Get(), Read(object_.Get(), L"EmailData").value.Get().pdispVal);
}

TEST_F(SmtpCtlTest, SendsTheMessageAsItWasWhenAsked) {
    ScriptedServer server({Talk(kSending)});
    for (const wchar_t* line :
         {L"X-Folded: one", L"\ttwo", L" X-Blank :  v ", L"", L" \r\n\t",
          L"X-Break: a\r\n\r\nBcc: b", L"\tgo\non: c", L"No Name: d", L"\tgone", L"X-A\r\nBcc: e",
          L"X-\u00E9: f", L"X:Y: g", L"nameless\n\rBcc:h", L"."}) {
        Compose({{L"AddHeader", {line}, L"other true"}});
    }
    Set(L"Port", server.Port());
    Answers({{L"SendMail", {}, L"other true"}});
    const std::wstring date = test::Ask(mail_.Get(), L"Date");
    Compose({{L"XMailer", {}, L"<AnonymousMailer>"},
             {L"TextMessage=", {L"later"}},
             {L"To=", {L"later@b.example"}}});
    Set(L"SmtpServer", L"later");
    Set(L"EmailData", ComPtr<IDispatch>());
    EXPECT_EQ(L"1(1, object)", Event());
    EXPECT_EQ("", server.Problems());
    EXPECT_EQ("From: Me <from@a.example>\r\nTo: \"x<y\" <to\xEF\xBC\xA0"
              "b.example>\r\nSubject: \xE4\xB8\xAD\r\nX-Folded: one\r\n\ttwo\r\nX-Blank: v\r\n"
              "X-Break: a Bcc: b\r\n\tgo on: c\r\nnameless Bcc:h\r\n..\r\nDate: " +
                  std::string(date.begin(), date.end()) +
                  "\r\nX-Mailer: <AnonymousMailer>\r\nMIME-Version: 1-0\r\n"
                  "Content-type: text/plain; charset=utf-8\r\n"
                  "Content-Transfer-Encoding: base64\r\n\r\ndGV4dCDDqQ==",
              server.Texts().at(0));
}

TEST_F(SmtpCtlTest, ComposesWhatTheMessageHolds) {
    const std::string plain = "Content-type: text/plain; charset=utf-8\r\n"
                              "Content-Transfer-Encoding: base64\r\n\r\n";
    const std::string html = "Content-type: text/html; charset=utf-8\r\n"
                             "Content-Transfer-Encoding: base64\r\n\r\naA==";
    const std::string boundary =
        "\r\n--3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472";
    const std::wstring longText(1 << 20, L'h');
    const struct {
        std::vector<Exchange> changes;
        std::string expected; // somewhere in the text
    } rows[] = {
        {{{L"TextMessage=", {L""}}}, "\r\n" + plain + "$"},
        {{{L"HtmlMessage=", {L"h"}}}, "\r\n" + html + "$"},
        {{{L"TextMessage=", {L"t"}}},
         "\r\n" + boundary + "\r\n" + html + boundary + "\r\n" + plain + "dA==" + boundary + "--$"},
        // Half a character is the sign for one that cannot be shown.
        {{{L"HtmlMessage=", {L""}}, {L"TextMessage=", {L"\xDBFF"}}}, "\r\n\r\n77+9$"},
        {{{L"Subject=", {L"a\xD800z\xDC00"}}}, "\r\nSubject: a\xEF\xBF\xBDz\xEF\xBF\xBD\r\n"},
        {{{L"AddHeader", {L"X-Long: " + longText}, L"other true"}},
         "\r\nX-Long: " + std::string(longText.size(), 'h') + "\r\n"},
        {{{L"Date=", {L"my own"}}, {L"XMailer=", {L"mine"}}}, "\r\nX-Mailer: mine\r\n"},
        {{}, "\r\nDate: my own\r\n"},
    };
    for (const auto& row : rows) {
        Renew();
        Compose(row.changes);
        EXPECT_EQ(L"SMTP_SUCCESS", Send(Talk(kSending)));
        EXPECT_NE(std::string::npos, (text_ + "$").find(row.expected)) << row.expected;
    }
}

TEST_F(SmtpCtlTest, NamesTheOutcomeOfEachStep) {
    for (std::size_t step = 0; step < kSent; ++step) {
        const bool isTaken = step + 1 == kSent; // whatever comes after that
        const std::pair<const char*, const wchar_t*> faults[] = {
            {"S:550 no\r\n", kSending[step].refused},
            {"CLOSE", isTaken ? L"SMTP_SUCCESS" : L"SMTP_TERMINATED"},
            {"SILENCE", isTaken ? L"SMTP_SUCCESS" : L"SMTP_TIMEOUT_ERR"}};
        for (const auto& [fault, status] : faults) {
            Renew();
            Set(L"Timeout", 1);
            EXPECT_EQ(status, Send(Talk(kSending, {fault}, step))) << fault << " at " << step;
        }
        Renew(); // and aborted there
        ScriptedServer server({Talk(kSending, {"SILENCE"}, step)});
        Set(L"Port", server.Port());
        Answers({{L"SendMail", {}, L"other true"}});
        Sleep(20 * static_cast<DWORD>(step));
        Answers({{L"Abort", {}, L"true"}});
        EXPECT_NE(L"none", Event());
        EXPECT_TRUE(Status() == L"SMTP_ABORTED" || (isTaken && Status() == L"SMTP_SUCCESS"));
        Answers({{L"Abort", {}, L"false"}});
    }
}

TEST_F(SmtpCtlTest, NamesWhatIsWrongWithSettings) {
    const Script bye = {"S:220 hi\r\n", "C:HELO *", "S:250 ok\r\n", "C:MAIL*",
                        "S:550 no\r\n", "C:QUIT",   "S:221 bye\r\n"};
    Set(L"Password", L""); // no authentication
    EXPECT_EQ(L"SMTP_UNEXPECTED", Send(bye));
    EXPECT_EQ("", problems_);
    const struct {
        const wchar_t* property;
        Argument value;
        int port;
        const wchar_t* status;
    } rows[] = {
        {L"SmtpServer", L"", 25, L"SMTP_INVALID_STATE"},
        {L"SmtpServer", L" \t\r\n", 25, L"SMTP_INVALID_STATE"},
        {L"Timeout", 30, 0, L"SMTP_INVALID_STATE"},
        {L"Timeout", 30, 65536, L"SMTP_INVALID_STATE"},
        {L"Timeout", 30, -1, L"SMTP_INVALID_STATE"},
        {L"Timeout", 30, 1, L"SMTP_CONNECT_ERROR"},
    };
    for (const auto& row : rows) {
        Renew();
        Set(row.property, row.value);
        EXPECT_EQ(row.status, SendTo(row.port)) << row.port;
    }
    for (const int timeout : {0, -1}) {
        Renew();
        Set(L"Timeout", timeout);
        EXPECT_EQ(L"SMTP_TIMEOUT_ERR", Send({"SILENCE"})) << timeout;
    }
    for (const wchar_t* property : {L"Login", L"Password"}) {
        for (const wchar_t separator : {L'\r', L'\n', L'\0'}) {
            Renew();
            Set(property, L"a"s + separator + L"b");
            Answers({{L"SendMail", {}, L"false"}, {L"StatusCode", {}, L"SMTP_INVALID_ARGS"}});
        }
    }
}

TEST_F(SmtpCtlTest, TakesAddressesThatCannotBeSentAsRefused) {
    Script script = Talk(kSending, {"C:QUIT", "S:221 bye\r\n"}, 5);
    script.erase(script.end() - 3); // MAIL
    for (const wchar_t* property : {L"From=", L"To="}) {
        for (const std::wstring& address :
             {L"a@b\r\nDATA"s, L"A <a@b\n>"s, L"a b@c"s, L"<a\uFF1Cb@c>"s, L"a@b\uFF1E"s,
              L"a\x7F@b"s, L"a@b\x85"s, L"a@b\0c"s}) {
            Compose({{property, {address}}});
            Renew();
            EXPECT_EQ(L"SMTP_UNEXPECTED", Send(script)) << address;
            EXPECT_EQ("", problems_);
        }
        Compose({{property, {L"a@b"}}});
    }
}

TEST_F(SmtpCtlTest, IsBusyUntilItsEventAndFreeInIt) {
    ScriptedServer server({Talk(kSending), Talk(kSending)});
    Set(L"Port", server.Port());
    const std::vector<Exchange> busy = {{L"SendMail", {}, L"other true"},
                                        {L"WorkInProgress", {}, L"1"},
                                        {L"SendMail", {}, L"false"},
                                        {L"StatusCode", {}, L"SMTP_BUSY_WORKING"}};
    sink_.onEvent = [&](DISPID) {
        if (sink_.Count() == 1) {
            Answers(busy);
        }
        return S_OK;
    };
    Answers(busy);
    EXPECT_TRUE(sink_.WaitFor(2, kPatience));
    EXPECT_EQ(L"SMTP_SUCCESS", Status());
    EXPECT_EQ("", server.Problems());
}

class PopCtlTest : public MailTest {
protected:
    PopCtlTest()
        : MailTest(L"PopCtl", L"LastError",
                   {{L"PopServer=", {L"127.0.0.1"}},
                    {L"Login=", {L"me\u00E9"}},
                    {L"Password=", {L"\uFF01\uFF58"}}}) {} // full-width "!x"

    std::wstring Connect(const ScriptedServer& server) {
        Set(L"Port", server.Port());
        return Outcome(L"Connect");
    }
    void LogIn(const ScriptedServer& server) {
        ASSERT_EQ(L"1(1, object) POP_SUCCESS", Connect(server));
        Answers({{L"Connected", {}, L"1"}});
    }
};

TEST_F(PopCtlTest, BeginsWithItsDefaults) {
    object_ = New(L"PopCtl");
    Answers({{L"Port", {}, L"110"},
             {L"Timeout", {}, L"30"},
             {L"Connected", {}, L"0"},
             {L"LastError", {}, L"POP_SUCCESS"},
             {L"EmailData", {}, L"nothing"},
             {L"GetMailCount", {}, L"false"},
             {L"LastError", {}, L"POP_NOT_YET_CONNECTED"},
             {L"RetrieveMessage", {1}, L"false"},
             {L"DeleteMessage", {1}, L"false"},
             {L"Disconnect", {}, L"false"},
             {L"AbortCurrentAction", {}, L"false"},
             {L"Password=", {L"\uFF01\uFF58"}},
             {L"Password", {}, L"\uFF01\uFF58"}});
}

TEST_F(PopCtlTest, ReadsAMailbox) {
    ScriptedServer server({Talk(
        kLogin,
        {"C:STAT", "S:+OK 2 999\r\n", "C:RETR 1",
         "S:+OK\r\nSubject: a\r\n\tb\r\nX: \xC3\xA9\r\nY: \xE9\r\n\r\nline\r\n\r\n..\r\n"
         "\xE4\xB8\xAD\r\n.\r\n",
         "C:RETR 7", "S:+OK\r\nonly: headers\r\n.\r\n", "C:RETR 0", "S:-ERR none\r\n", "C:DELE 2",
         "S:+OK\r\n", "C:DELE -2147483648", "S:-ERR what\r\n", "C:QUIT", "S:+OK\r\n", "CLOSE"})});
    EXPECT_TRUE(PostbackWindows().empty()); // the first operation makes it
    LogIn(server);
    EXPECT_EQ(1u, PostbackWindows().size());
    Answers({{L"Connect", {}, L"false"}, {L"LastError", {}, L"POP_ALREADY_CONNECTED"}});
    EXPECT_EQ(L"2(2, object) POP_SUCCESS", Outcome(L"GetMailCount"));
    EXPECT_EQ(L"3(1, object) POP_SUCCESS", Outcome(L"RetrieveMessage", {1}));
    Answers({{L"CurrentMessageIndex", {}, L"1"}});
    const CallResult first = Read(object_.Get(), L"EmailData");
    const std::vector<Exchange> mail = {
        {L"NumHeaders", {}, L"4"},
        {L"GetHeader", {1}, L"\tb"}, // not unfolded
        {L"GetHeaderByName", {L"x"}, L"\u00E9"},
        {L"GetHeaderByName", {L"y"}, L"\u00E9"},
        {L"TextMessage", {}, L"line\r\n\r\n..\r\n\u4E2D"},
        {L"HtmlMessage", {}, L""},
    };
    ExpectAnswers(first.value.Get().pdispVal, mail);
    EXPECT_EQ(L"3(1, object) POP_SUCCESS", Outcome(L"RetrieveMessage", {7}));
    ExpectAnswers(first.value.Get().pdispVal, mail); // the next message is another object
    ExpectAnswers(Read(object_.Get(), L"EmailData").value.Get().pdispVal,
                  {{L"GetHeader", {0}, L"only: headers"}});
    EXPECT_EQ(L"3(0, object) POP_UNEXPECTED", Outcome(L"RetrieveMessage", {0}));
    Answers({{L"CurrentMessageIndex", {}, L"7"}});
    EXPECT_EQ(L"4(1, 2, object) POP_SUCCESS", Outcome(L"DeleteMessage", {2}));
    EXPECT_EQ(L"4(0, -2147483648, object) POP_UNEXPECTED", Outcome(L"DeleteMessage", {INT_MIN}));
    EXPECT_EQ(L"5(1, object) POP_SUCCESS", Outcome(L"Disconnect"));
    Answers({{L"Connected", {}, L"0"}, {L"GetMailCount", {}, L"false"}});
    EXPECT_EQ(L"POP_NOT_YET_CONNECTED", Status());
    EXPECT_EQ("", server.Problems());
}

TEST_F(PopCtlTest, NamesWhatKeepsItFromLoggingIn) {
    for (std::size_t step = 0; step < std::size(kLogin); ++step) {
        const std::pair<const char*, const wchar_t*> faults[] = {
            {"S:-ERR no\r\n", kLogin[step].refused},
            {"S:\r\n", kLogin[step].refused},
            {"CLOSE", L"POP_TERMINATED"},
            {"RESET", L"POP_TERMINATED"},
            {"SILENCE", L"POP_TIMEOUT"}};
        for (const auto& [fault, error] : faults) {
            ScriptedServer server({Talk(kLogin, {fault}, step), Talk(kLogin, {"SILENCE"})});
            Renew();
            Set(L"Timeout", 1);
            EXPECT_EQ(L"1(0, object) "s + error, Connect(server)) << fault << step;
            Answers({{L"Connected", {}, L"0"}});
            LogIn(server); // the same object can try again
        }
    }
}

TEST_F(PopCtlTest, NamesWhatIsWrongWithSettings) {
    const struct {
        const wchar_t* property;
        Argument value;
        const wchar_t* error;
    } rows[] = {{L"PopServer", L"", L"POP_INVALID_STATE"},
                {L"Login", L"", L"POP_INVALID_STATE"},
                {L"Password", L"", L"POP_INVALID_STATE"},
                {L"Login", L"me\r\nDELE 1", L"POP_INVALID_ARGS"},
                {L"Password", L"x\n", L"POP_INVALID_ARGS"},
                {L"Password", L"x\0y"s, L"POP_INVALID_ARGS"},
                {L"PopServer", L" \t", L"POP_INVALID_STATE"},
                {L"Port", 0, L"POP_INVALID_STATE"},
                {L"Port", 65536, L"POP_INVALID_STATE"},
                {L"Port", 1, L"POP_CONNECT_ERROR"},
                {L"Timeout", -1, L"POP_TIMEOUT"}};
    ScriptedServer server({{"SILENCE"}});
    for (const auto& row : rows) {
        Renew();
        Set(L"Port", server.Port());
        Set(row.property, row.value);
        EXPECT_EQ(L"1(0, object) "s + row.error, Outcome(L"Connect")) << row.property;
    }
}

TEST_F(PopCtlTest, EndsAnOperationThatTheServerDoesNotFinish) {
    const struct {
        const wchar_t* method;
        std::vector<Argument> arguments;
        const wchar_t* event;
        const char* halfReply;
    } rows[] = {{L"GetMailCount", {}, L"2(0, object) ", "S:+OK 3"},
                {L"RetrieveMessage", {3}, L"3(0, object) ", "S:+OK\r\nA: b\r\n\r\nbody\r\n"},
                {L"DeleteMessage", {3}, L"4(0, 3, object) ", "S:"},
                {L"Disconnect", {}, L"5(0, object) ", "S:"}};
    const std::pair<const char*, const wchar_t*> ends[] = {{"CLOSE", L"POP_TERMINATED"},
                                                           {"SILENCE", L"POP_TIMEOUT"}};
    for (const auto& row : rows) {
        for (const auto& [end, error] : ends) {
            ScriptedServer server({Talk(kLogin, {"C:*", row.halfReply, end})});
            Renew();
            LogIn(server);
            Set(L"Timeout", 1);
            EXPECT_EQ(row.event + std::wstring(error), Outcome(row.method, row.arguments));
            Answers({{L"Connected", {}, L"0"}});
        }
    }
}

TEST_F(PopCtlTest, NoticesThatAnIdleConnectionHasEnded) {
    ScriptedServer server({Talk(kLogin, {"CLOSE"}), Talk(kLogin, {"SILENCE"})});
    EXPECT_TRUE(Connect(server).starts_with(L"1(1, object) "));
    EXPECT_TRUE(PumpUntil([&] { return Ask(L"Connected") == L"0"; }, kPatience));
    Answers({{L"GetMailCount", {}, L"false"}, {L"LastError", {}, L"POP_NOT_YET_CONNECTED"}});
    LogIn(server);
}

TEST_F(PopCtlTest, IsBusyUntilTheEventAndKeepsItsClient) {
    ScriptedServer server({{"WAIT:200", "S:+OK\r\n", "C:USER*", "S:+OK\r\n", "C:PASS*", "S:+OK\r\n",
                            "C:STAT", "WAIT:100", "S:+OK 1 1\r\n"}});
    Set(L"Port", server.Port());
    Answers({{L"Connect", {}, L"true"}});
    for (int i = 0; i < 5; ++i) {
        Answers({{L"Connect", {}, L"false"},
                 {L"LastError", {}, L"POP_BUSY_WORKING"},
                 {L"GetMailCount", {}, L"false"},
                 {L"LastError", {}, L"POP_NOT_YET_CONNECTED"}});
        DisturbPostbackWindows();
    }
    EXPECT_EQ(L"1(1, object)", Event());
    Answers({{L"GetMailCount", {}, L"true"},
             {L"DeleteMessage", {1}, L"false"},
             {L"LastError", {}, L"POP_BUSY_WORKING"},
             {L"Connect", {}, L"false"},
             {L"LastError", {}, L"POP_ALREADY_CONNECTED"}});
    EXPECT_EQ(L"2(1, object)", Event());
    EXPECT_EQ(L"POP_SUCCESS", Status());
}

TEST_F(PopCtlTest, AbortsWhatRunsAndClosesTheConnection) {
    ScriptedServer server({Talk(kLogin, {"C:RETR*", "S:+OK\r\nA: b\r\n", "SILENCE"}),
                           {"SILENCE"},
                           Talk(kLogin, {"SILENCE"})});
    const auto abort = [&](const wchar_t* event) {
        Answers({{L"AbortCurrentAction", {}, L"true"}, {L"Connected", {}, L"0"}});
        EXPECT_TRUE(!event || Event() == event);
        EXPECT_EQ(L"POP_TERMINATED", Status());
        Answers({{L"AbortCurrentAction", {}, L"false"}});
    };
    LogIn(server);
    Answers({{L"RetrieveMessage", {1}, L"true"}});
    abort(L"3(0, object)");
    Answers({{L"Connect", {}, L"true"}}); // while it is not logged in yet
    abort(L"1(0, object)");
    LogIn(server); // while nothing runs
    abort(nullptr);
    EXPECT_EQ("", server.Problems()); // ends when all connections are closed
    EXPECT_EQ(seen_, sink_.Count());
}

} // namespace
} // namespace tervane::test
