// The POP3 client against servers that follow a script: every step of the conversation with every
// way in which a server can take it.

#include "ZelNet/SourceCode/mail/APop3Client.h"
#include "ZelNet/SourceCode/mail/PopStates.h"
#include "support/ScriptedServer.h"
#include "support/TestThreads.h"
#include "tests/zelnet/SocketTesting.h"

namespace ZelNet {
namespace {

using tervane::test::ScriptedServer;
using Script = ScriptedServer::Script;

// Writes down each notification as a word, "greeted:0" for instance.
class PopRecorder final : public Pop3ClientListener {
public:
    void Connected(PopStatus status) override { Note("connected", status); }
    void Greeted(PopStatus status) override { Note("greeted", status); }
    void LoginStep(bool isPassword, PopStatus status) override {
        Note(isPassword ? "pass" : "user", status);
    }
    void MailCount(PopStatus status, std::uint32_t count, std::uint32_t totalSize) override {
        Note("count=" + std::to_string(count) + "/" + std::to_string(totalSize), status);
    }
    void Retrieved(PopStatus status, int index, std::vector<std::string>& lines) override {
        std::string text;
        for (const std::string& line : lines) {
            text += line + "|";
        }
        Note("retrieved" + std::to_string(index) + "=" + text, status);
    }
    void Deleted(int index, PopStatus status) override {
        Note("deleted" + std::to_string(index), status);
    }
    void QuitDone(PopStatus status) override { Note("quitDone", status); }

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
    void Note(const std::string& what, PopStatus status) {
        const std::lock_guard lock(mutex_);
        words_.push_back(what + ":" + std::to_string(static_cast<int>(status)));
        changed_.notify_all();
    }

    tervane::test::TestMutex mutex_;
    tervane::test::TestCondition changed_;
    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

class Pop3ClientTest : public SocketLayerTest {
protected:
    void Renew() {
        client.reset();
        client = APop3Client::Create();
        ASSERT_TRUE(client);
        client->SetLogin("me", "secret");
    }
    void SetUp() override { Renew(); }

    // Does everything once, as far as the server lets it; all notifications.
    std::string Converse(int port) {
        client->SetServer("127.0.0.1", static_cast<std::uint32_t>(port));
        EXPECT_TRUE(client->Connect(&recorder));
        std::string words;
        for (;;) {
            const std::string word = recorder.Next();
            words += (words.empty() ? "" : " ") + word;
            if (word.find(":4") != std::string::npos || word == "connected:3" ||
                word == "nothing") {
                return words;
            }
            if (word == "pass:0") {
                EXPECT_TRUE(client->GetMailCount());
            } else if (word.starts_with("count")) {
                EXPECT_TRUE(client->RetrieveMessage(2));
            } else if (word.starts_with("retrieved")) {
                EXPECT_TRUE(client->DeleteMessage(-3));
            } else if (word.starts_with("deleted")) {
                EXPECT_TRUE(client->Quit());
            }
        }
    }

    PopRecorder recorder;
    std::unique_ptr<APop3Client> client;
};

// What a server says at each step, after what the client has said, and what comes of that.
struct Step {
    const char* command; // null: the server goes on
    const char* reply;
    const char* done;
    const char* refused;
    bool closes;
};
constexpr Step kSteps[] = {
    {nullptr, "+OK hello", "greeted:0", "greeted:3", true},
    {"C:USER me", "+OK", "user:0", "user:2", true},
    {"C:PASS secret", "+OK", "pass:0", "pass:2", true},
    {"C:STAT", "+OK 3 1200", "count=3/1200:0", "count=0/0:8", false},
    {"C:RETR 2", "+OK\r\nA: b\r\n\r\n..\r\n.x\r\n.", "retrieved2=A: b||..|.x|:0", "retrieved2=:8",
     false},
    {"C:DELE -3", "+OK", "deleted-3:0", "deleted-3:8", false},
    {"C:QUIT", "+OK bye", "quitDone:0", "quitDone:8", false},
};
constexpr std::size_t kCount = std::size(kSteps);

// The conversation in which `fault` replaces the reply of one step; it is the last that is said
// when it `ends` the conversation.
Script ScriptWith(std::size_t faultyStep, const std::string& fault, bool ends) {
    Script script;
    for (std::size_t i = 0; i < kCount; ++i) {
        if (kSteps[i].command) {
            script.push_back(kSteps[i].command);
        }
        script.push_back(i == faultyStep ? fault : std::string("S:") + kSteps[i].reply + "\r\n");
        if (i == faultyStep && ends) {
            return script;
        }
    }
    script.push_back("CLOSE");
    return script;
}

std::string Done(std::size_t steps) {
    std::string words = "connected:0";
    for (std::size_t i = 0; i < steps; ++i) {
        words += std::string(" ") + kSteps[i].done;
    }
    return words;
}

TEST_F(Pop3ClientTest, IsRefusedAtEachStep) {
    for (const char* refusal :
         {"-ERR no\r\n", "\r\n", "\n\r", " +OK\r\n", "\xFF\x01garbage\x80\r\n"}) {
        for (std::size_t step = 0; step < kCount; ++step) {
            Renew();
            ScriptedServer server(
                {ScriptWith(step, std::string("S:") + refusal, kSteps[step].closes)});
            std::string expected = Done(step) + " " + kSteps[step].refused;
            if (!kSteps[step].closes) {
                expected += Done(kCount).substr(Done(step + 1).size()) + " connected:4";
            } else { // what was refused is then ended by the close
                expected = expected + " " + std::string(kSteps[step].done).substr(0, 4);
            }
            EXPECT_EQ(Converse(server.Port()).substr(0, expected.size()), expected)
                << refusal << step;
            EXPECT_EQ(server.Problems(), "") << refusal << step;
        }
    }
}

TEST_F(Pop3ClientTest, TellsWhatACloseHasEnded) {
    const char* const ended[kCount] = {"greeted:4",     "user:4",      "pass:4",    "count=0/0:4",
                                       "retrieved2=:4", "deleted-3:4", "quitDone:4"};
    for (const char* end : {"CLOSE", "RESET"}) {
        for (std::size_t step = 0; step < kCount; ++step) {
            Renew();
            ScriptedServer server({ScriptWith(step, end, true)});
            EXPECT_EQ(Converse(server.Port()), Done(step) + " " + ended[step]) << end << step;
            EXPECT_FALSE(client->GetMailCount());
            EXPECT_EQ(client->GetLastError(), PopStatus::kInvalidState);
        }
    }
    Renew();
    Script half = ScriptWith(4, "S:+OK\r\nA: b\r\n\r\nhal", true);
    half.push_back("CLOSE");
    ScriptedServer server({half});
    EXPECT_EQ(Converse(server.Port()), Done(4) + " retrieved2=:4");
}

TEST_F(Pop3ClientTest, TakesRepliesInEveryShape) {
    const std::string longText(100'000, 'x');
    const std::string message = std::string(kSteps[4].reply).substr(3) + "\r\n";
    for (std::size_t step = 0; step < kCount; ++step) {
        const std::string reply = kSteps[step].reply;
        std::string lf = reply + "\r\n";
        std::erase(lf, '\r');
        const std::string numbers = step == 3 ? "3, 1200 " : "";
        const std::string rest = step == 4 ? message : "\r\n";
        for (const std::string& shape :
             {"DRIP:" + reply + "\r\n", "S:" + lf, "S:+" + numbers + longText + rest,
              "S:+" + numbers + rest}) {
            Renew();
            ScriptedServer server({ScriptWith(step, shape, false)});
            EXPECT_EQ(Converse(server.Port()), Done(kCount) + " connected:4")
                << shape.substr(0, 30);
            EXPECT_EQ(server.Problems(), "") << shape.substr(0, 30);
        }
    }
}

TEST_F(Pop3ClientTest, RetrievesLongLinesWhole) {
    const std::string body(2'000'000, 'x');
    ScriptedServer server({ScriptWith(4, "S:+OK\r\n" + body + "\r\n\r\n.\r\n", false)});
    const std::string words = Converse(server.Port());
    EXPECT_NE(words.find("retrieved2=" + body + "||:0"), std::string::npos);
}

// A line for which there is no memory is not left out of a message that is then said to be whole.
TEST_F(Pop3ClientTest, FailsWhenALineCannotBeKept) {
    const std::string line(300'000, 'x');
    ScriptedServer server({ScriptWith(4, "S:+OK\r\nA: b\r\n\r\n" + line + "\r\n.\r\n", true)});
    client->SetServer("127.0.0.1", static_cast<std::uint32_t>(server.Port()));
    EXPECT_TRUE(client->Connect(&recorder));
    while (recorder.Next() != "pass:0") {
    }
    EXPECT_TRUE(client->GetMailCount());
    EXPECT_EQ(recorder.Next(), kSteps[3].done);
    RefuseMemory(line.size() + 2); // with CR and NUL
    EXPECT_TRUE(client->RetrieveMessage(2));
    EXPECT_EQ(recorder.Next(), kSteps[4].refused);
    EXPECT_EQ(recorder.Next(), "retrieved2=:4"); // the connection is closed
    RefuseMemory(0);
    EXPECT_EQ(server.Problems(), "");
}

TEST_F(Pop3ClientTest, CutsOffAServerThatNeverEndsItsStatusLine) {
    ScriptedServer server({{"S:+OK " + std::string(3 << 19, 'x'), "SILENCE"}});
    EXPECT_EQ(Converse(server.Port()), "connected:0 greeted:4");
}

TEST_F(Pop3ClientTest, TellsWhenNobodyListens) {
    EXPECT_EQ(Converse(UnusedPort()), "connected:3");
}

TEST_F(Pop3ClientTest, TracesEveryLineButNoPassword) {
    ScriptedServer server({{"S:+OK hello\r\n", "C:USER me", "S:+OK\r\n", "C:PASS 7Zgv-unheard",
                            "S:+OK you said 7Zgv-unheard\r\n", "C:STAT", "S:+OK 3 1200\r\n",
                            "C:RETR*", "S:+OK\r\n\r\nYours is 7Zgv-unheard.\r\n.\r\n", "SILENCE"}});
    client->SetLogin("me", "7Zgv-unheard");
    client->SetServer("127.0.0.1", static_cast<std::uint32_t>(server.Port()));
    EXPECT_TRUE(client->Connect(&recorder));
    while (recorder.Next() != "pass:0") {
    }
    client->ForgetPassword(); // and is still known
    std::string ring = LogRing();
    EXPECT_NE(ring.find("WAIT_FOR_USER/PASS_RESPONSE, Size = 25, Line = (repeats the password)"),
              std::string::npos);
    EXPECT_EQ(ring.find("7Zgv"), std::string::npos);
    EXPECT_TRUE(client->GetMailCount());
    EXPECT_EQ(recorder.Next(), "count=3/1200:0");
    EXPECT_TRUE(client->RetrieveMessage(1));
    EXPECT_EQ(recorder.Next(), "retrieved1=|Yours is 7Zgv-unheard.|:0");
    ring = LogRing();
    EXPECT_NE(ring.find("WAIT_FOR_STAT_RESPONSE, Size = 10, Line = +OK 3 1200"), std::string::npos);
    EXPECT_EQ(ring.find("7Zgv"), std::string::npos);
}

TEST_F(Pop3ClientTest, RefusesWhatCannotBe) {
    const auto expect = [this](bool done, PopStatus reason) {
        EXPECT_FALSE(done);
        EXPECT_EQ(client->GetLastError(), reason);
    };
    expect(client->Connect(nullptr), PopStatus::kInvalidArguments);
    expect(client->Connect(&recorder), PopStatus::kInvalidState); // no server
    for (std::uint32_t port : {0u, 65536u, 0xFFFFFFFFu}) {
        client->SetServer("127.0.0.1", port);
        expect(client->Connect(&recorder), PopStatus::kInvalidState);
    }
    client->SetServer("127.0.0.1", 110);
    for (const std::string& text : {std::string("a\rb"), std::string("a\n"), std::string(1, 0)}) {
        client->SetLogin(text, "secret");
        expect(client->Connect(&recorder), PopStatus::kInvalidArguments);
        client->SetLogin("me", text);
        expect(client->Connect(&recorder), PopStatus::kInvalidArguments);
    }
    client->SetLogin("", "secret");
    expect(client->Connect(&recorder), PopStatus::kInvalidState);
    client->SetLogin("me", "");
    expect(client->Connect(&recorder), PopStatus::kInvalidState);
    expect(client->GetMailCount(), PopStatus::kInvalidState);
    expect(client->RetrieveMessage(1), PopStatus::kInvalidState);
    expect(client->DeleteMessage(1), PopStatus::kInvalidState);
    expect(client->Quit(), PopStatus::kInvalidState);
}

TEST_F(Pop3ClientTest, CanBeDestroyedAtAnyTime) {
    for (std::size_t step = 0; step < kCount; ++step) {
        ScriptedServer server({ScriptWith(step, "SILENCE", true)});
        client->SetServer("127.0.0.1", static_cast<std::uint32_t>(server.Port()));
        client->Connect(&recorder);
        Sleep(static_cast<DWORD>(step) * 5);
        Renew();
    }
}

TEST(PopReply, FindsTheTwoNumbersOfADropListing) {
    const struct {
        const char* line;
        std::uint32_t count, size;
    } cases[] = {{"+OK 3 1200", 3, 1200},
                 {"+OK 0 0", 0, 0},
                 {"+OK", 0, 0},
                 {"", 0, 0},
                 {"+OK 7", 7, 0},
                 {"+OK3,x12y9", 3, 12},
                 {"+OK -5 -6", 5, 6},
                 {"12", 12, 0},
                 {"+OK 99999999999999999999999 4294967295", 4294967295u, 4294967295u}};
    for (const auto& row : cases) {
        const PopDropListing listing = ReadDropListing(row.line);
        EXPECT_EQ(listing.count, row.count) << row.line;
        EXPECT_EQ(listing.totalSize, row.size) << row.line;
    }
}

} // namespace
} // namespace ZelNet
