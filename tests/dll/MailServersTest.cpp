// SmtpCtl and PopCtl with the real servers of tests/network/mail.sh, which runs these tests.

#include "ZelBase/text/Base64.h"
#include "ZelBase/text/TextConversion.h"
#include "support/ObjectTest.h"

#include <cstdlib>

namespace tervane::test {
namespace {

constexpr int kOpenPort = 25;
constexpr int kAuthenticatingPort = 587;

// A body as the message carries it.
std::wstring Encoded(const std::wstring& text) {
    const std::string base64 = ZelBase::Base64Encode(ZelBase::Utf16ToUtf8(text));
    return std::wstring(base64.begin(), base64.end());
}

class MailServers : public testing::Test {
protected:
    void SetUp() override {
        if (!std::getenv("TERVANE_MAIL_SERVERS")) {
            GTEST_SKIP() << "run by tests/network/mail.sh, with the servers it needs";
        }
        Advise(smtp.Get(), &sent);
        Advise(pop.Get(), &read);
        ExpectAnswers(mail.Get(),
                      {{L"From=", {L"Somebody <from@a.example>"}}, {L"To=", {L"to@b.example"}}});
        ExpectAnswers(
            smtp.Get(),
            {{L"Login=", {L"to"}}, {L"SmtpServer=", {L"mail.example"}}, {L"EmailData=", {mail}}});
        ExpectAnswers(
            pop.Get(),
            {{L"Login=", {L"to"}}, {L"Password=", {L"s3cret"}}, {L"PopServer=", {L"127.0.0.1"}}});
    }
    void TearDown() override {
        sent.Forget();
        read.Forget();
    }

    // Logs in where that is asked for.
    std::wstring Send(int port) {
        return Send(port, port == kAuthenticatingPort ? L"s3cret" : L"");
    }
    std::wstring Send(int port, const wchar_t* password) {
        Write(smtp.Get(), L"Port", port);
        Write(smtp.Get(), L"Password", password);
        const size_t before = sent.Count();
        EXPECT_EQ(L"other true", Ask(smtp.Get(), L"SendMail"));
        EXPECT_TRUE(sent.WaitFor(before + 1, kPatience));
        return Ask(smtp.Get(), L"StatusCode");
    }
    // Runs an operation to its end; the first argument of its event.
    long Do(const wchar_t* method, const std::vector<Argument>& arguments = {}) {
        const size_t before = read.Count();
        EXPECT_EQ(L"true", Ask(pop.Get(), method, arguments)) << method;
        EXPECT_TRUE(read.WaitFor(before + 1, kPatience)) << method;
        return read[before].arguments[0].Get().lVal;
    }
    // Waits for a mail, fetches and deletes it; null when none comes.
    ComPtr<IDispatch> Fetch() {
        for (int attempt = 0; attempt < 100; ++attempt) {
            EXPECT_EQ(Do(L"Connect"), 1);
            const long count = Do(L"GetMailCount");
            if (count > 0) {
                EXPECT_EQ(count, 1);
                EXPECT_EQ(Do(L"RetrieveMessage", {1}), 1);
                EXPECT_EQ(Do(L"DeleteMessage", {1}), 1);
            }
            EXPECT_EQ(Do(L"Disconnect"), 1);
            if (count > 0) {
                const CallResult message = Read(pop.Get(), L"EmailData");
                return AddReference(message.value.Get().pdispVal);
            }
            PumpUntil([] { return false; }, 100);
        }
        return {};
    }

    Apartment apartment;
    RecordingSink sent, read;
    ComPtr<IDispatch> mail = New(L"EmailData");
    ComPtr<IDispatch> smtp = New(L"SmtpCtl");
    ComPtr<IDispatch> pop = New(L"PopCtl");
};

TEST_F(MailServers, BringBodiesBackAsTheyWere) {
    const std::wstring bodies[] = {
        L"plain ASCII",
        L"Gr\u00FC\u00DFe",
        L"\u4F60\u597D\uFF0C\u4E16\u754C",
        L"\U0001F600 \U0001F1E8\U0001F1E6",
        L".\r\n.\r\n..\r\n.x\r\n\r\n.",
        L"\n\r\n  \t trailing \r",
        std::wstring(10'000, L'x') + L"\r\nFrom here",
        L"",
    };
    int port = kOpenPort;
    for (const std::wstring& body : bodies) {
        for (const bool withText : {true, false}) {
            for (const bool withHtml : {true, false}) {
                if (body.empty() && (withText || withHtml)) {
                    continue;
                }
                const std::wstring text = withText ? body : L"";
                const std::wstring html = withHtml ? L"<p>" + body : L"";
                Write(mail.Get(), L"TextMessage", text);
                Write(mail.Get(), L"HtmlMessage", html);
                port = port == kOpenPort ? kAuthenticatingPort : kOpenPort;
                ASSERT_EQ(Send(port), L"SMTP_SUCCESS");
                const auto fetched = Fetch();
                ASSERT_TRUE(fetched);
                const std::wstring received = Ask(fetched.Get(), L"TextMessage");
                if (withText && withHtml) {
                    EXPECT_NE(std::wstring::npos,
                              received.find(L"\r\n" + Encoded(html) + L"\r\n--"));
                    EXPECT_NE(std::wstring::npos,
                              received.find(L"\r\n" + Encoded(text) + L"\r\n--"));
                } else {
                    EXPECT_EQ(Encoded(text + html), received);
                }
            }
        }
    }
}

TEST_F(MailServers, CarryFiveMegabytes) {
    std::wstring text(5 << 20, L' ');
    for (size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<wchar_t>(L' ' + i * i % 91);
    }
    Write(mail.Get(), L"TextMessage", text);
    ASSERT_EQ(Send(kOpenPort), L"SMTP_SUCCESS");
    const auto fetched = Fetch();
    ASSERT_TRUE(fetched);
    EXPECT_TRUE(Ask(fetched.Get(), L"TextMessage") == Encoded(text));
}

TEST_F(MailServers, NameWhatIsWrong) {
    EXPECT_EQ(Send(kAuthenticatingPort, L"wrong"), L"SMTP_AUTH_ERROR");
    EXPECT_EQ(Send(kOpenPort, L"s3cret"), L"SMTP_CONNECT_ERROR"); // it refuses AUTH itself
    EXPECT_EQ(Send(kAuthenticatingPort, L""), L"SMTP_UNEXPECTED");
    Write(mail.Get(), L"To", L"nobody@b.example");
    EXPECT_EQ(Send(kOpenPort), L"SMTP_UNEXPECTED");
    Write(pop.Get(), L"Password", L"wrong");
    EXPECT_EQ(Do(L"Connect"), 0);
    EXPECT_EQ(Ask(pop.Get(), L"LastError"), L"POP_AUTH_ERROR");

    Write(smtp.Get(), L"SmtpServer", L"unknown.example");
    EXPECT_EQ(Send(kOpenPort), L"SMTP_TERMINATED");
    Write(pop.Get(), L"PopServer", L"unknown.example");
    EXPECT_EQ(Do(L"Connect"), 0);
    EXPECT_EQ(Ask(pop.Get(), L"LastError"), L"POP_CONNECT_ERROR");
    Write(smtp.Get(), L"SmtpServer", L"10.55.0.9"); // never answers
    Write(smtp.Get(), L"Timeout", 1);
    const DWORD start = GetTickCount();
    EXPECT_EQ(Send(kOpenPort), L"SMTP_TIMEOUT_ERR");
    EXPECT_LT(GetTickCount() - start, 3000u);
}

TEST_F(MailServers, AreGivenUpBeforeTheyAnswer) {
    // A connection that is still being made, and a name that is still being looked up.
    for (const wchar_t* server : {L"10.55.0.9", L"slow.example"}) {
        Write(smtp.Get(), L"SmtpServer", server);
        Write(pop.Get(), L"PopServer", server);
        for (const DWORD wait : {0, 200}) {
            const size_t before = sent.Count();
            const size_t readBefore = read.Count();
            EXPECT_EQ(L"other true", Ask(smtp.Get(), L"SendMail"));
            EXPECT_EQ(L"true", Ask(pop.Get(), L"Connect"));
            Sleep(wait);
            const DWORD start = GetTickCount();
            EXPECT_EQ(L"true", Ask(smtp.Get(), L"Abort"));
            EXPECT_EQ(L"true", Ask(pop.Get(), L"AbortCurrentAction"));
            EXPECT_TRUE(sent.WaitFor(before + 1, kPatience));
            EXPECT_TRUE(read.WaitFor(readBefore + 1, kPatience));
            EXPECT_LT(GetTickCount() - start, 2000u);
            EXPECT_EQ(Ask(smtp.Get(), L"StatusCode"), L"SMTP_ABORTED");
            EXPECT_EQ(Ask(pop.Get(), L"LastError"), L"POP_TERMINATED");
        }
    }
}

// Judged by mail_check.py, which knows these texts too.
TEST_F(MailServers, LeaveMessagesForOtherParsers) {
    const std::wstring text =
        L"Gr\u00FC\u00DFe, \u4E16\u754C \U0001F600\r\n.\r\n..x\r\n" + std::wstring(10'000, L'z');
    const std::wstring html = L"<p>Gr\u00FC\u00DFe, \u4E16\u754C \U0001F600</p>\n.\n";
    const struct {
        const wchar_t* subject;
        std::wstring text, html;
    } cases[] = {
        {L"text", text, L""}, {L"html", L"", html}, {L"both", text, html}, {L"empty", L"", L""}};
    Write(mail.Get(), L"To", L"keep@b.example");
    for (const auto& row : cases) {
        Write(mail.Get(), L"Subject", row.subject);
        Write(mail.Get(), L"TextMessage", row.text);
        Write(mail.Get(), L"HtmlMessage", row.html);
        EXPECT_EQ(Send(kOpenPort), L"SMTP_SUCCESS") << std::wstring(row.subject);
    }
}

} // namespace
} // namespace tervane::test
