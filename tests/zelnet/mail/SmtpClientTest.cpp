// The SMTP client against servers that follow a script: every step of the conversation with every
// way in which a server can take it.

#include "ZelBase/text/Base64.h"
#include "ZelNet/SourceCode/mail/ASmtpClient.h"
#include "ZelNet/SourceCode/mail/PlainMessage.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "support/ScriptedServer.h"
#include "support/TestThreads.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

// Writes down each notification as a word, "greeted:0" for instance.
class SmtpRecorder final : public SmtpClientListener {
public:
    void Connected(SmtpStatus status) override { Note("connected", status); }
    void Greeted(SmtpStatus status) override { Note("greeted", status); }
    void LoggedIn(SmtpStatus status) override { Note("loggedIn", status); }
    void MailSent(SmtpStatus status) override { Note("mailSent", status); }
    void QuitDone(SmtpStatus status) override { Note("quitDone", status); }
    void Closed(SmtpStatus status) override { Note("closed", status); }

    // The next word; "nothing" when none comes in time.
    std::string Next() {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, std::chrono::milliseconds(kPatienceMs),
                               [this] { return next_ < words_.size(); })) {
            return "nothing";
        }
        return words_[next_++];
    }

private:
    void Note(const std::string& what, SmtpStatus status) {
        const std::lock_guard lock(mutex_);
        words_.push_back(what + ":" + std::to_string(static_cast<int>(status)));
        changed_.notify_all();
    }

    tervane::test::TestMutex mutex_;
    tervane::test::TestCondition changed_;
    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

class SmtpClientTest : public SocketLayerTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(client);
        client->SetServer("127.0.0.1");
        client->SetFrom("from@a.example");
        client->SetLogin("me");
        client->SetPassword("secret");
        message.AddHeader("Subject", "test");
        message.SetBody("one\r\n.\r\n.two", false);
    }

    // Sends the message and leaves, as far as the server lets it; all notifications.
    std::string Converse(int port, bool useAuth) {
        client->SetPort(static_cast<std::uint32_t>(port));
        EXPECT_TRUE(client->Connect(&recorder, useAuth));
        std::string words;
        for (;;) {
            const std::string word = recorder.Next();
            words += (words.empty() ? "" : " ") + word;
            if (word == "loggedIn:0") {
                EXPECT_TRUE(client->SendMail("to@b.example", &message));
            } else if (word == "mailSent:0" || word == "mailSent:7") {
                EXPECT_TRUE(client->Quit());
            } else if (word.starts_with("closed") || word == "connected:2" || word == "nothing") {
                return words;
            }
        }
    }

    SmtpRecorder recorder;
    AMIME message;
    std::unique_ptr<ASmtpClient> client = ASmtpClient::Create();
};

// What a server says at each step, after what the client has said.
struct Step {
    const char* command; // null: the server begins
    const char* reply;
};
constexpr Step kWithAuth[] = {{nullptr, "220 hello"},
                              {"C:EHLO *", "250 ok"},
                              {"C:AUTH LOGIN", "334 VXNlcm5hbWU6"},
                              {"C:bWU=", "334 UGFzc3dvcmQ6"},
                              {"C:c2VjcmV0", "235 ok"},
                              {"C:MAIL From: <from@a.example>", "250 ok"},
                              {"C:RCPT TO: <to@b.example>", "250 ok"},
                              {"C:DATA", "354 go on"},
                              {"TEXT", "250 taken"},
                              {"C:QUIT", "221 bye"}};
constexpr std::size_t kSteps = std::size(kWithAuth);

// The conversation in which `fault` replaces the reply of one step, and is the last that is said
// when it `ends` the conversation.
Script ScriptWith(std::size_t faultyStep, const std::string& fault, bool ends) {
    Script script;
    for (std::size_t i = 0; i < kSteps; ++i) {
        if (kWithAuth[i].command) {
            script.push_back(kWithAuth[i].command);
        }
        if (i == faultyStep) {
            script.push_back(fault);
            if (ends) {
                break;
            }
        } else {
            script.push_back(std::string("S:") + kWithAuth[i].reply + "\r\n");
        }
    }
    return script;
}

constexpr char kAllWell[] = "connected:0 greeted:0 loggedIn:0 mailSent:0 quitDone:0 closed:0";

TEST_F(SmtpClientTest, SendsAMail) {
    ScriptedServer server({ScriptWith(kSteps, "", false)});
    EXPECT_EQ(Converse(server.Port(), true), kAllWell);
    EXPECT_EQ(server.Problems(), "");
    ASSERT_EQ(server.Texts().size(), 1u);
    EXPECT_EQ(server.Texts()[0],
              "Subject: test\r\nMIME-Version: 1-0\r\nContent-type: text/plain\r\n"
              "Content-Transfer-Encoding: 7bit\r\n\r\none\r\n..\r\n.two");
    EXPECT_EQ(message.Body(), "one\r\n..\r\n.two"); // the body itself is changed
    EXPECT_EQ(client->LastResponse(), "bye");
}

TEST_F(SmtpClientTest, TracesItsStatesButNoPassword) {
    // A server that says everything back.
    ScriptedServer server({{"S:220 hi\r\n", "C:EHLO *", "S:250 ok\r\n", "C:AUTH LOGIN",
                            "S:334 bWU=\r\n", "C:bWU=", "S:334 go on\r\n", "C:N1pndi11bmhlYXJk",
                            "S:535 N1pndi11bmhlYXJk is 7Zgv-unheard\r\n"}});
    client->SetPassword("7Zgv-unheard");
    EXPECT_EQ(Converse(server.Port(), true),
              "connected:0 greeted:0 loggedIn:8 connected:3 closed:3");
    EXPECT_EQ(server.Problems(), "");
    const std::string ring = LogRing();
    EXPECT_NE(ring.find("WAIT_FOR_PASS_RESPONSE"), std::string::npos);
    EXPECT_EQ(ring.find("7Zgv"), std::string::npos);
    EXPECT_EQ(ring.find("N1pn"), std::string::npos);
}

TEST_F(SmtpClientTest, GreetsByNameWithoutAuthentication) {
    const std::string name = NetworkInfo::Create()->HostName();
    ASSERT_NE(name, "");
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO " + name, "S:250 ok\r\n", "C:MAIL*",
                            "S:250 ok\r\n", "C:RCPT*", "S:452 full\r\n", "C:QUIT", "S:221 bye\r\n"},
                           {"S:220 hi\r\n", "C:EHLO " + name, "S:250 ok\r\n", "CLOSE"}});
    EXPECT_EQ(Converse(server.Port(), false),
              "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0");
    EXPECT_EQ(Converse(server.Port(), true), "connected:0 greeted:0 connected:3 closed:3");
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(SmtpClientTest, IsRefusedAtEachStep) {
    const char* const expected[kSteps] = {
        "connected:0 greeted:2 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:2 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:2 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:8 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:8 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0",
        "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0",
        "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0",
        "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0",
        "connected:0 greeted:0 loggedIn:0 mailSent:0 quitDone:7 closed:0",
    };
    for (const char* refusal : {"550 no\r\n", "421 later\r\n", "\r\n", "\n\r",
                                "\xFF\x01\x02garbage\x80\r\n", "x220\r\n"}) {
        for (std::size_t step = 0; step < kSteps; ++step) {
            Script script = ScriptWith(step, std::string("S:") + refusal, true);
            if (step >= 5 && step < 9) {
                script.insert(script.end(), {"C:QUIT", "S:221 bye\r\n"});
            }
            ScriptedServer server({script});
            EXPECT_EQ(Converse(server.Port(), true), expected[step]) << refusal << " at " << step;
            EXPECT_EQ(server.Problems(), "") << refusal << " at " << step;
        }
    }
}

TEST_F(SmtpClientTest, IsLeftAloneAtEachStep) {
    const char* const expected[kSteps] = {
        "connected:0 connected:3 closed:3",
        "connected:0 greeted:0 connected:3 closed:3",
        "connected:0 greeted:0 connected:3 closed:3",
        "connected:0 greeted:0 connected:3 closed:3",
        "connected:0 greeted:0 connected:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:3 closed:3",
        "connected:0 greeted:0 loggedIn:0 mailSent:0 closed:0",
    };
    for (const char* end : {"CLOSE", "RESET"}) {
        for (std::size_t step = 0; step < kSteps; ++step) {
            ScriptedServer server({ScriptWith(step, end, true)});
            EXPECT_EQ(Converse(server.Port(), true), expected[step]) << end << " at " << step;
        }
    }
}

TEST_F(SmtpClientTest, TakesRepliesInEveryShape) {
    const std::string longText(100'000, 'x');
    for (std::size_t step = 0; step < kSteps; ++step) {
        const std::string reply = kWithAuth[step].reply;
        const std::string code = reply.substr(0, 3);
        for (const std::string& shape :
             {"DRIP:" + reply + "\r\n", "S:" + reply + "\n", "S:" + reply + "\n\r",
              "S:" + code + " " + longText + "\r\n", std::string("S:1\r\n"),
              std::string("S:3xx whatever\r\n")}) {
            ScriptedServer server({ScriptWith(step, shape, false)});
            EXPECT_EQ(Converse(server.Port(), true), kAllWell) << shape.substr(0, 30);
            EXPECT_EQ(server.Problems(), "") << shape.substr(0, 30);
        }
    }
}

TEST_F(SmtpClientTest, WaitsForTheLastLineOfThreeRepliesOnly) {
    for (std::size_t step = 0; step < 3; ++step) {
        const std::string code = std::string(kWithAuth[step].reply).substr(0, 3);
        for (const char* after : {"550 no\r\n", "250 yes\r\n"}) {
            const bool refused = *after == '5';
            Script script =
                ScriptWith(step, "S:" + code + "-one\r\n" + code + "-\r\n" + after, refused);
            ScriptedServer server({script});
            const std::string words = Converse(server.Port(), true);
            EXPECT_EQ(words == kAllWell, !refused) << step << after << words;
            EXPECT_EQ(server.Problems(), "") << step << after;
        }
    }
    // MAIL's first line is enough: its last one counts as RCPT's reply, and so on.
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n", "C:MAIL*",
                            "S:250-one\r\n250-two\r\n250-three\r\n", "C:RCPT*", "C:DATA", "TEXT",
                            "S:554 no\r\n", "C:QUIT", "S:221 bye\r\n"}});
    EXPECT_EQ(Converse(server.Port(), false),
              "connected:0 greeted:0 loggedIn:0 mailSent:7 quitDone:0 closed:0");
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(SmtpClientTest, IgnoresRepliesThatNothingAsksFor) {
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n500 what\r\n", "C:MAIL*",
                            "S:250 ok\r\n", "C:RCPT*", "S:250 ok\r\n", "C:DATA", "S:354 go\r\n",
                            "TEXT", "S:250 ok\r\n", "C:QUIT", "S:221 bye\r\n221 bye\r\n"}});
    client->SetPort(static_cast<std::uint32_t>(server.Port()));
    EXPECT_TRUE(client->Connect(&recorder, false));
    while (recorder.Next() != "loggedIn:0") {
    }
    for (int waited = 0; client->LastResponse() != "what" && waited < kPatienceMs; waited += 10) {
        Sleep(10);
    }
    EXPECT_TRUE(client->SendMail("to@b.example", &message));
    EXPECT_EQ(recorder.Next(), "mailSent:0");
    EXPECT_TRUE(client->Quit());
    EXPECT_EQ(recorder.Next(), "quitDone:0");
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(SmtpClientTest, FailsWhenAReplyCannotBeRead) {
    const std::string reply = "250 " + std::string(300'000, 'x');
    const std::pair<std::size_t, const char*> ends[] = {
        {1, "connected:0 greeted:0 loggedIn:2 connected:3 closed:3"},
        {4, "connected:0 greeted:0 loggedIn:8 connected:3 closed:3"}};
    for (const auto& [step, expected] : ends) {
        ScriptedServer server({ScriptWith(step, "S:" + reply + "\r\n", true)});
        RefuseMemory(reply.size() + 2); // with CR and NUL
        EXPECT_EQ(Converse(server.Port(), true), expected);
        RefuseMemory(0);
        EXPECT_EQ(server.Problems(), "");
    }
}

TEST_F(SmtpClientTest, CutsOffAServerThatNeverEndsItsLine) {
    ScriptedServer server({{"S:220 " + std::string(3 << 19, 'x'), "SILENCE"}});
    EXPECT_EQ(Converse(server.Port(), false), "connected:0 connected:3 closed:3");
}

TEST_F(SmtpClientTest, TellsWhenNobodyListensOrTheNameIsUnknown) {
    EXPECT_EQ(Converse(UnusedPort(), false), "connected:2");
    EXPECT_FALSE(client->Quit()); // closes what is left of the connection
    EXPECT_EQ(recorder.Next(), "connected:3");
    EXPECT_EQ(recorder.Next(), "closed:3");
}

TEST_F(SmtpClientTest, RefusesWhatCannotBe) {
    const auto expect = [this](bool done, SmtpStatus reason) {
        EXPECT_FALSE(done);
        EXPECT_EQ(client->GetLastError(), reason);
    };
    expect(client->SetServer(nullptr), SmtpStatus::kInvalidArguments);
    expect(client->Connect(nullptr, false), SmtpStatus::kInvalidArguments);
    expect(client->Connect(&recorder, false), SmtpStatus::kInvalidState); // no port
    client->SetPort(65536);
    expect(client->Connect(&recorder, false), SmtpStatus::kInvalidState);
    client->SetPort(25);
    client->SetPassword("a\nb");
    expect(client->Connect(&recorder, true), SmtpStatus::kInvalidArguments);
    client->SetPassword("");
    expect(client->Connect(&recorder, true), SmtpStatus::kInvalidState);
    client->SetServer("");
    expect(client->Connect(&recorder, false), SmtpStatus::kInvalidState);
    client->SetServer("256.1.1.1.");
    expect(client->SendMail("x", &message), SmtpStatus::kInvalidState);
    expect(client->Quit(), SmtpStatus::kInvalidState);

    client->SetServer("127.0.0.1");
    ScriptedServer server({{"S:220 hi\r\n", "C:HELO*", "S:250 ok\r\n", "SILENCE"}});
    client->SetPort(static_cast<std::uint32_t>(server.Port()));
    EXPECT_TRUE(client->Connect(&recorder, false));
    expect(client->SetServer("x"), SmtpStatus::kBusy);
    expect(client->SetPort(26), SmtpStatus::kBusy);
    expect(client->SetBody("x"), SmtpStatus::kBusy);
    while (recorder.Next() != "loggedIn:0") {
    }
    expect(client->Connect(&recorder, false), SmtpStatus::kInvalidState);
    expect(client->SendMail("x", nullptr), SmtpStatus::kInvalidState);
}

TEST_F(SmtpClientTest, CanBeDestroyedAtAnyTime) {
    for (std::size_t step = 0; step < kSteps; ++step) {
        ScriptedServer server({ScriptWith(step, "SILENCE", true)});
        client->SetPort(static_cast<std::uint32_t>(server.Port()));
        client->Connect(&recorder, true);
        Sleep(static_cast<DWORD>(step) * 3);
        client.reset();
        client = ASmtpClient::Create();
        SetUp();
    }
}

TEST(SmtpText, DoublesLoneDotsInOnePass) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\r\n.\r\nb", "a\r\n..\r\nb"},
        {"\r\n.\r\n.\r\n.\r\n", "\r\n..\r\n..\r\n..\r\n"},
        {".x\r\n.x\r\nx.\r\n", ".x\r\n.x\r\nx.\r\n"},
        {".\r\nb", ".\r\nb"}, // the very first line is left alone
        {"a\n.\nb\r.\r", "a\n.\nb\r.\r"},
        {"a\r\n.", "a\r\n."},
        {"", ""}};
    for (const auto& [text, expected] : cases) {
        std::string doubled = text;
        DoubleLoneDots(doubled, false);
        EXPECT_EQ(doubled, expected);
    }
    std::string first = ".\r\n.\r\nx";
    DoubleLoneDots(first, true);
    EXPECT_EQ(first, "..\r\n..\r\nx");
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
