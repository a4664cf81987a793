// The mail clients against servers that follow a script: every step of both conversations with
// every way in which a server can take it.

#include "ZelNet/SourceCode/mail/APop3Client.h"
#include "ZelNet/SourceCode/mail/ASmtpClient.h"
#include "ZelNet/SourceCode/mail/PlainMessage.h"
#include "ZelNet/SourceCode/mail/PopStates.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "support/ScriptedServer.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

// Writes down each notification as a word, "greeted:0" for instance.
class MailRecorder final : public WordRecorder,
                           public SmtpClientListener,
                           public Pop3ClientListener {
public:
    void Connected(SmtpStatus status) override { Note("connected", status); }
    void Greeted(SmtpStatus status) override { Note("greeted", status); }
    void LoggedIn(SmtpStatus status) override { Note("loggedIn", status); }
    void MailSent(SmtpStatus status) override { Note("mailSent", status); }
    void QuitDone(SmtpStatus status) override { Note("quitDone", status); }
    void Closed(SmtpStatus status) override { Note("closed", status); }
    void Connected(PopStatus status) override { Note("connected", status); }
    void Greeted(PopStatus status) override { Note("greeted", status); }
    void LoginStep(bool isPassword, PopStatus status) override {
        Note(isPassword ? "pass" : "user", status);
    }
    void MailCount(PopStatus status, std::uint32_t count, std::uint32_t totalSize) override {
        Note("count=" + std::to_string(count) + "/" + std::to_string(totalSize), status);
    }
    void Retrieved(PopStatus status, int index, std::string& text) override {
        std::replace(text.begin(), text.end(), '\n', '|');
        Note("retrieved" + std::to_string(index) + "=" + text, status);
    }
    void Deleted(int index, PopStatus status) override {
        Note("deleted" + std::to_string(index), status);
    }
    void QuitDone(PopStatus status) override { Note("quitDone", status); }

    // Skips what comes before that word.
    bool SkipTo(const std::string& word) {
        std::string next;
        while (next != word && next != "nothing") {
            next = Next();
        }
        return next == word;
    }

private:
    template <typename Status>
    void Note(const std::string& what, Status status) {
        Add(*state_, what + ":" + std::to_string(static_cast<int>(status)));
    }
};

enum Protocol { kSmtp, kPlainSmtp, kPop };

// What a server says at each step, after what the client has said, and what the client tells then.
struct Step {
    const char* command; // null: the server goes on
    const char* reply;
    const char* done;
    const char* refused;
    const char* ended;     // by a close in place of the reply
    std::size_t next = 99; // the step after a refusal; 99: there is none
};
const std::vector<Step> kSmtpSteps = {
    {nullptr, "220 hello", " greeted:0", " greeted:2 connected:3 closed:3",
     " connected:3 closed:3"},
    {"C:EHLO *", "250 ok", "", " loggedIn:2 connected:3 closed:3", " connected:3 closed:3"},
    {"C:AUTH LOGIN", "334 VXNlcm5hbWU6", "", " loggedIn:2 connected:3 closed:3",
     " connected:3 closed:3"},
    {"C:bWU=", "334 UGFzc3dvcmQ6", "", " loggedIn:8 connected:3 closed:3", " connected:3 closed:3"},
    {"C:c2VjcmV0", "235 ok", " loggedIn:0", " loggedIn:8 connected:3 closed:3",
     " connected:3 closed:3"},
    {"C:MAIL From: <from@a.example>", "250 ok", "", " mailSent:7", " mailSent:3 closed:3", 9},
    {"C:RCPT TO: <to@b.example>", "250 ok", "", " mailSent:7", " mailSent:3 closed:3", 9},
    {"C:DATA", "354 go on", "", " mailSent:7", " mailSent:3 closed:3", 9},
    {"TEXT", "250 taken", " mailSent:0", " mailSent:7", " mailSent:3 closed:3", 9},
    {"C:QUIT", "221 bye", " quitDone:0 closed:0", " quitDone:7 closed:0", " closed:0"}};
const std::vector<Step> kPopSteps = {
    {nullptr, "+OK hello", " greeted:0", " greeted:3 greeted:4", " greeted:4"},
    {"C:USER me", "+OK", " user:0", " user:2 user:4", " user:4"},
    {"C:PASS secret", "+OK", " pass:0", " pass:2 pass:4", " pass:4"},
    {"C:STAT", "+OK 3 1200", " count=3/1200:0", " count=0/0:8", " count=0/0:4", 4},
    {"C:RETR 2", "+OK\r\nA: b\r\n\r\n..\r\n.x\r\n.", " retrieved2=A: b||..|.x|:0", " retrieved2=:8",
     " retrieved2=:4", 5},
    {"C:DELE -3", "+OK", " deleted-3:0", " deleted-3:8", " deleted-3:4", 6},
    {"C:QUIT", "+OK bye", " quitDone:0 connected:4", " quitDone:8 connected:4", " quitDone:4", 7}};

const std::vector<Step>& StepsOf(Protocol protocol) {
    return protocol == kPop ? kPopSteps : kSmtpSteps;
}

// The steps from `first` to before `last`, as the server's script and as the client's words.
Script Play(const std::vector<Step>& steps, std::size_t first, std::size_t last) {
    Script script;
    for (std::size_t i = first; i < std::min(last, steps.size()); ++i) {
        if (steps[i].command) {
            script.push_back(steps[i].command);
        }
        script.push_back(std::string("S:") + steps[i].reply + "\r\n");
    }
    return script;
}
std::string Done(const std::vector<Step>& steps, std::size_t first, std::size_t last) {
    std::string words = first == 0 ? "connected:0" : "";
    for (std::size_t i = first; i < std::min(last, steps.size()); ++i) {
        words += steps[i].done;
    }
    return words;
}

// The conversation in which `fault` takes the place of a step's reply, and which goes on at `next`.
Script WithFault(const std::vector<Step>& steps, std::size_t step, const std::string& fault,
                 std::size_t next) {
    Script script = Play(steps, 0, step);
    if (steps[step].command) {
        script.push_back(steps[step].command);
    }
    script.push_back(fault);
    const Script rest = Play(steps, next, steps.size());
    script.insert(script.end(), rest.begin(), rest.end());
    if (&steps == &kPopSteps && next < 99) {
        script.push_back("CLOSE"); // this client waits for it
    }
    return script;
}

class MailClientTest : public SocketLayerTest {
protected:
    void SetUp() override {
        smtp = ASmtpClient::Create();
        pop = APop3Client::Create();
        ASSERT_TRUE(smtp && pop);
        smtp->SetServer("127.0.0.1");
        smtp->SetFrom("from@a.example");
        smtp->SetLogin("me");
        smtp->SetPassword("secret");
        pop->SetLogin("me", "secret");
        message = std::make_unique<AMIME>();
        message->AddHeader("Subject", "test");
        message->SetBody("one\r\n.\r\n.two", false);
    }
    bool Connect(Protocol protocol, int port) {
        if (protocol == kPop) {
            pop->SetServer("127.0.0.1", static_cast<std::uint32_t>(port));
            return pop->Connect(&recorder);
        }
        smtp->SetPort(static_cast<std::uint32_t>(port));
        return smtp->Connect(&recorder, protocol == kSmtp);
    }
    // What a client does after a word.
    bool React(const std::string& word) {
        if (word == "loggedIn:0") {
            return smtp->SendMail("to@b.example", message.get());
        }
        if (word == "mailSent:0" || word == "mailSent:7") {
            return smtp->Quit();
        }
        if (word == "pass:0") {
            return pop->GetMailCount();
        }
        if (word.starts_with("count") && !word.ends_with(":4")) {
            return pop->RetrieveMessage(2);
        }
        if (word.starts_with("retrieved") && !word.ends_with(":4")) {
            return pop->DeleteMessage(-3);
        }
        return !word.starts_with("deleted") || word.ends_with(":4") || pop->Quit();
    }
    // Does everything once, as far as the server lets it; all notifications.
    std::string Converse(Protocol protocol, int port) {
        EXPECT_TRUE(Connect(protocol, port));
        std::string words;
        for (std::string word; word != "nothing";) {
            word = recorder.Next();
            words += (words.empty() ? "" : " ") + word;
            EXPECT_TRUE(React(word)) << word;
            if (protocol == kPop ? word.ends_with(":4") || word == "connected:3"
                                 : word.starts_with("closed") || word == "connected:2") {
                return words;
            }
        }
        return words;
    }
    void ExpectConversation(Protocol protocol, const Script& script, const std::string& words,
                            const std::string& what) {
        ScriptedServer server({script});
        EXPECT_EQ(Converse(protocol, server.Port()), words) << what;
        EXPECT_EQ(server.Problems(), "") << what;
        SetUp();
    }

    MailRecorder recorder;
    std::unique_ptr<AMIME> message;
    std::unique_ptr<ASmtpClient> smtp;
    std::unique_ptr<APop3Client> pop;
};

TEST_F(MailClientTest, TakesEveryReplyAtEachStep) {
    for (const Protocol protocol : {kSmtp, kPop}) {
        const std::vector<Step>& steps = StepsOf(protocol);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const std::string before = Done(steps, 0, i);
            for (const char* refusal : {"-ERR no\r\n", "550 no\r\n", "\r\n", "\n\r", " +OK\r\n",
                                        "x220\r\n", "\xFF\x01\x02garbage\x80\r\n"}) {
                ExpectConversation(protocol,
                                   WithFault(steps, i, std::string("S:") + refusal, steps[i].next),
                                   before + steps[i].refused +
                                       (steps[i].next < 99 ? Done(steps, steps[i].next, 99) : ""),
                                   refusal + std::to_string(i));
            }
            for (const char* end : {"CLOSE", "RESET"}) {
                ExpectConversation(protocol, WithFault(steps, i, end, 99), before + steps[i].ended,
                                   end + std::to_string(i));
            }
            const std::string reply = std::string(steps[i].reply) + "\r\n";
            std::string withLf = reply;
            std::erase(withLf, '\r');
            std::string withLongText = reply;
            withLongText.insert(reply.find('\r'), " " + std::string(100'000, 'x'));
            const std::string shortest = protocol == kPop ? "+" + reply.substr(3) : "1\r\n";
            for (const std::string& shape :
                 {"DRIP:" + reply, "S:" + withLf, "S:" + withLongText, "S:" + shortest}) {
                ExpectConversation(protocol, WithFault(steps, i, shape, i + 1), Done(steps, 0, 99),
                                   shape.substr(0, 30));
            }
        }
    }
}

TEST_F(MailClientTest, KnowsTheOddConversations) {
    const std::string name = NetworkInfo::Create()->HostName();
    ASSERT_NE(name, "");
    const std::string endless(3 << 19, 'x');
    const std::string all = Done(kSmtpSteps, 0, 99);
    const struct {
        Protocol protocol;
        Script script;
        std::string words;
    } cases[] = {
        {kPlainSmtp,
         {"S:220 hi\r\n", "C:HELO " + name, "S:250 ok\r\n", "C:MAIL*", "S:250 ok\r\n", "C:RCPT*",
          "S:452 full\r\n", "C:QUIT", "S:221 bye\r\n"},
         "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0"},
        {kSmtp,
         {"S:220 hi\r\n", "C:EHLO " + name, "S:250 ok\r\n", "CLOSE"},
         "connected:0 greeted:0 connected:3 closed:3"},
        // MAIL's first line is enough: its last one counts as RCPT's reply, and so on.
        {kPlainSmtp,
         {"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n", "C:MAIL*",
          "S:250-one\r\n250-two\r\n250-three\r\n", "C:RCPT*", "C:DATA", "TEXT", "S:554 no\r\n",
          "C:QUIT", "S:221 bye\r\n"},
         "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0"},
        // The last line of the first three replies decides.
        {kSmtp, WithFault(kSmtpSteps, 0, "S:220-one\r\n220-\r\n220 yes\r\n", 1), all},
        {kSmtp, WithFault(kSmtpSteps, 1, "S:250-one\r\n250-\r\n250 yes\r\n", 2), all},
        {kSmtp, WithFault(kSmtpSteps, 2, "S:334-one\r\n334-\r\n334 yes\r\n", 3), all},
        {kSmtp, WithFault(kSmtpSteps, 1, "S:250-one\r\n550 no\r\n", 99),
         "connected:0 greeted:0 loggedIn:2 connected:3 closed:3"},
        // Lines that never end, and one that is long.
        {kPlainSmtp, {"S:220 " + endless, "SILENCE"}, "connected:0 connected:3 closed:3"},
        {kPop, {"S:+OK " + endless, "SILENCE"}, "connected:0 greeted:4"},
        {kPop, WithFault(kPopSteps, 4, "S:+OK\r\n" + endless + "\r\n\r\n.\r\n", 5),
         Done(kPopSteps, 0, 4) + " retrieved2=" + endless + "||:0" + Done(kPopSteps, 5, 99)},
        {kPop,
         {"S:+OK\r\n", "C:USER*", "S:+OK\r\n", "C:PASS*", "S:+OK\r\n", "C:STAT", "S:+OK 3 1200\r\n",
          "C:RETR 2", "S:+OK\r\nA: b\r\n\r\nhal", "CLOSE"},
         Done(kPopSteps, 0, 4) + " retrieved2=:4"}};
    for (const auto& row : cases) {
        ExpectConversation(row.protocol, row.script, row.words, row.words.substr(0, 200));
    }
    for (const Protocol protocol : {kSmtp, kPop}) {
        EXPECT_EQ(Converse(protocol, UnusedPort()),
                  protocol == kPop ? "connected:3" : "connected:2");
    }
    EXPECT_FALSE(smtp->Quit()); // closes what is left of the connection
    EXPECT_TRUE(recorder.SkipTo("closed:3"));
}

TEST_F(MailClientTest, SendsTheTextWithItsLoneDotsDoubled) {
    ScriptedServer server({Play(kSmtpSteps, 0, 99)});
    EXPECT_EQ(Converse(kSmtp, server.Port()), Done(kSmtpSteps, 0, 99));
    EXPECT_EQ(server.Problems(), "");
    EXPECT_EQ(server.Texts(), std::vector<std::string>{
                                  "Subject: test\r\nMIME-Version: 1-0\r\nContent-type: text/plain"
                                  "\r\nContent-Transfer-Encoding: 7bit\r\n\r\none\r\n..\r\n.two"});
    EXPECT_EQ(message->Body(), "one\r\n..\r\n.two"); // the body itself is changed
    EXPECT_EQ(smtp->LastResponse(), "bye");
}

TEST_F(MailClientTest, IgnoresRepliesThatNothingAsksFor) {
    Script script = Play(kSmtpSteps, 0, 99);
    script[8] = "S:235 ok\r\n500 what\r\n";
    ScriptedServer server({script});
    EXPECT_TRUE(Connect(kSmtp, server.Port()));
    EXPECT_TRUE(recorder.SkipTo("loggedIn:0"));
    for (int waited = 0; smtp->LastResponse() != "what" && waited < kPatienceMs; waited += 10) {
        Sleep(10);
    }
    EXPECT_TRUE(React("loggedIn:0"));
    EXPECT_EQ(recorder.Next(), "mailSent:0");
    EXPECT_TRUE(smtp->Quit());
    EXPECT_EQ(recorder.Next(), "quitDone:0");
    EXPECT_EQ(server.Problems(), "");
}

// Neither a reply nor a line of a message that is then said to be whole gets lost.
TEST_F(MailClientTest, FailsWhenALineCannotBeKept) {
    const std::string line(300'000, 'x');
    for (const std::size_t step : {1, 4}) {
        RefuseMemory(line.size() + 4 + 2); // with CR and NUL
        ExpectConversation(kSmtp, WithFault(kSmtpSteps, step, "S:250 " + line + "\r\n", 99),
                           Done(kSmtpSteps, 0, step) + kSmtpSteps[step].refused, "SMTP");
        RefuseMemory(0);
    }
    ScriptedServer server(
        {WithFault(kPopSteps, 4, "S:+OK\r\nA: b\r\n\r\n" + line + "\r\n.\r\n", 99)});
    EXPECT_TRUE(Connect(kPop, server.Port()));
    EXPECT_TRUE(recorder.SkipTo("pass:0"));
    EXPECT_TRUE(pop->GetMailCount());
    EXPECT_TRUE(recorder.SkipTo("count=3/1200:0"));
    RefuseMemory(line.size() + 2);
    EXPECT_TRUE(pop->RetrieveMessage(2));
    EXPECT_EQ(recorder.Next(), "retrieved2=:8");
    EXPECT_EQ(recorder.Next(), "retrieved2=:4"); // the connection is closed
    RefuseMemory(0);
    EXPECT_EQ(server.Problems(), "");
}

// Servers that say everything back; the log is open to every program.
TEST_F(MailClientTest, TracesItsStatesButNoPassword) {
    smtp->SetPassword("7Zgv-unheard");
    pop->SetLogin("me", "7Zgv-unheard");
    ScriptedServer sending({{"S:220 hi\r\n", "C:EHLO *", "S:250 ok\r\n", "C:AUTH LOGIN",
                             "S:334 bWU=\r\n", "C:bWU=", "S:334 go on\r\n", "C:N1pndi11bmhlYXJk",
                             "S:535 N1pndi11bmhlYXJk is 7Zgv-unheard\r\n"}});
    EXPECT_EQ(Converse(kSmtp, sending.Port()),
              "connected:0 greeted:0 loggedIn:8 connected:3 closed:3");
    LogReader log;
    EXPECT_NE(log.Text().find("WAIT_FOR_PASS_RESPONSE"), std::string::npos);
    ScriptedServer fetching(
        {{"S:+OK hello\r\n", "C:USER me", "S:+OK\r\n", "C:PASS 7Zgv-unheard",
          "S:+OK you said 7Zgv-unheard\r\n", "C:STAT", "S:+OK 3 1200\r\n", "C:RETR*",
          "S:+OK\r\n\r\nYours is 7Zgv-unheard.\r\n.\r\n", "SILENCE"}});
    EXPECT_TRUE(Connect(kPop, fetching.Port()));
    EXPECT_TRUE(recorder.SkipTo("pass:0"));
    pop->ForgetPassword(); // and is still known
    EXPECT_TRUE(pop->GetMailCount());
    EXPECT_TRUE(recorder.SkipTo("count=3/1200:0"));
    EXPECT_TRUE(pop->RetrieveMessage(1));
    EXPECT_EQ(recorder.Next(), "retrieved1=|Yours is 7Zgv-unheard.|:0");
    const std::string ring = log.Text();
    for (const char* text :
         {"WAIT_FOR_USER/PASS_RESPONSE, Size = 25, Line = (repeats the password)",
          "WAIT_FOR_STAT_RESPONSE, Size = 10, Line = +OK 3 1200"}) {
        EXPECT_NE(ring.find(text), std::string::npos) << text;
    }
    for (const char* secret : {"7Zgv", "N1pn"}) {
        EXPECT_EQ(ring.find(secret), std::string::npos) << secret;
    }
}

TEST_F(MailClientTest, RefusesToSendWhatCannotBe) {
    const auto expect = [this](SmtpStatus reason, bool done) {
        EXPECT_FALSE(done);
        EXPECT_EQ(smtp->GetLastError(), reason);
    };
    using enum SmtpStatus;
    expect(kInvalidArguments, smtp->SetServer(nullptr));
    expect(kInvalidArguments, smtp->Connect(nullptr, false));
    expect(kInvalidState, smtp->Connect(&recorder, false)); // no port
    expect(kInvalidState, smtp->SendMail("x", message.get()));
    expect(kInvalidState, smtp->Quit());
    for (const auto& [host, port, password, reason] :
         {std::tuple("127.0.0.1", 65536u, "x", kInvalidState),
          {"", 25, "x", kInvalidState},
          {"127.0.0.1", 25, "", kInvalidState},
          {"127.0.0.1", 25, "a\nb", kInvalidArguments}}) {
        smtp->SetServer(host);
        smtp->SetPort(port);
        smtp->SetPassword(password);
        expect(reason, smtp->Connect(&recorder, true));
    }
    SetUp();
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n", "SILENCE"}});
    EXPECT_TRUE(Connect(kPlainSmtp, server.Port()));
    expect(kBusy, smtp->SetServer("x") || smtp->SetPort(26) || smtp->SetBody("x"));
    EXPECT_TRUE(recorder.SkipTo("loggedIn:0"));
    expect(kInvalidState, smtp->Connect(&recorder, false));
    expect(kInvalidState, smtp->SendMail("x", nullptr));
}

TEST_F(MailClientTest, RefusesToFetchWhatCannotBe) {
    const auto expect = [this](PopStatus reason, bool done) {
        EXPECT_FALSE(done);
        EXPECT_EQ(pop->GetLastError(), reason);
    };
    using enum PopStatus;
    expect(kInvalidArguments, pop->Connect(nullptr));
    expect(kInvalidState, pop->Connect(&recorder)); // no server
    expect(kInvalidState, pop->GetMailCount());
    expect(kInvalidState, pop->RetrieveMessage(1));
    expect(kInvalidState, pop->DeleteMessage(1));
    expect(kInvalidState, pop->Quit());
    const std::tuple<std::uint32_t, std::string, std::string, PopStatus> rows[] = {
        {0, "me", "x", kInvalidState},
        {65536, "me", "x", kInvalidState},
        {110, "", "x", kInvalidState},
        {110, "me", "", kInvalidState},
        {110, "a\rb", "x", kInvalidArguments},
        {110, "me", "a\n", kInvalidArguments},
        {110, std::string(1, 0), "x", kInvalidArguments}};
    for (const auto& [port, user, password, reason] : rows) {
        pop->SetServer("127.0.0.1", port);
        pop->SetLogin(user, password);
        expect(reason, pop->Connect(&recorder));
    }
}

TEST_F(MailClientTest, CanBeDestroyedAtAnyTime) {
    for (const Protocol protocol : {kSmtp, kPop}) {
        for (std::size_t step = 0; step < StepsOf(protocol).size(); ++step) {
            ScriptedServer server({WithFault(StepsOf(protocol), step, "SILENCE", 99)});
            Connect(protocol, server.Port());
            Sleep(static_cast<DWORD>(step) * 4);
            SetUp();
        }
    }
}

TEST(PopReply, FindsTheTwoNumbersOfADropListing) {
    for (const auto& [line, count, size] :
         {std::tuple("+OK 3 1200", 3u, 1200u),
          {"+OK", 0, 0},
          {"+OK 7", 7, 0},
          {"+OK3,x12y9", 3, 12},
          {"+OK -5 -6", 5, 6},
          {"+OK 99999999999999999999999 4294967295", 4294967295u, 4294967295u}}) {
        EXPECT_EQ(ReadDropListing(line).count, count) << line;
        EXPECT_EQ(ReadDropListing(line).totalSize, size) << line;
    }
}

TEST(SmtpText, DoublesLoneDotsInOnePass) {
    for (const auto& [text, expected, fromStart] :
         {std::tuple("a\r\n.\r\nb", "a\r\n..\r\nb", false),
          {"\r\n.\r\n.\r\n.\r\n", "\r\n..\r\n..\r\n..\r\n", false},
          {".x\r\n.x\r\nx.\r\n", ".x\r\n.x\r\nx.\r\n", false},
          {".\r\nb", ".\r\nb", false}, // the very first line is left alone
          {".\r\n.\r\nx", "..\r\n..\r\nx", true},
          {"a\n.\nb\r.\r", "a\n.\nb\r.\r", false},
          {"a\r\n.", "a\r\n.", false}}) {
        std::string doubled = text;
        DoubleLoneDots(doubled, fromStart);
        EXPECT_EQ(doubled, expected);
    }
}

TEST(SmtpText, IsAPlainMessageForWantOfAnother) {
    using namespace std::chrono;
    const auto message =
        MakePlainMessage("a@b", "c@d", "hi", "body", sys_days(2003y / March / 5) + 7h + 4min);
    EXPECT_EQ(message->HeaderBlock() + message->Body(),
              "Date: 5 Mar 2003 7:4:0 UT\r\nFrom: a@b\r\nTo: c@d\r\nSubject: hi\r\n"
              "X-Mailer: <Velmarch>\r\nMIME-Version: 1-0\r\nContent-type: text/plain\r\n"
              "Content-Transfer-Encoding: 7bit\r\n\r\nbody");
}

} // namespace
} // namespace ZelNet
