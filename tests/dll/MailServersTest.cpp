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

    // Logs in where that is asked for, unless there is a password to log in with.
    std::wstring Send(int port, const wchar_t* password = nullptr) {
        const wchar_t* usual = port == kAuthenticatingPort ? L"s3cret" : L"";
        Write(smtp.Get(), L"Port", port);
        Write(smtp.Get(), L"Password", password ? password : usual);
        const std::size_t before = sent.Count();
        EXPECT_EQ(L"other true", Ask(smtp.Get(), L"SendMail"));
        EXPECT_TRUE(sent.WaitFor(before + 1, kPatience));
        return Ask(smtp.Get(), L"StatusCode");
    }
    // Runs an operation to its end; the first argument of its event.
    long Do(const wchar_t* method, const std::vector<Argument>& arguments = {}) {
        const std::size_t before = read.Count();
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
        std::wstring(1 << 20, L'x') + L"\r\nFrom here",
    };
    int port = kOpenPort;
    for (const std::wstring& body : bodies) {
        const std::pair<std::wstring, std::wstring> parts[] = {
            {body, L"<p>" + body}, {body, L""}, {L"", L"<p>" + body}};
        for (const auto& [text, html] : parts) {
            ExpectAnswers(mail.Get(), {{L"TextMessage=", {text}}, {L"HtmlMessage=", {html}}});
            port = port == kOpenPort ? kAuthenticatingPort : kOpenPort;
            ASSERT_EQ(Send(port), L"SMTP_SUCCESS");
            const auto fetched = Fetch();
            ASSERT_TRUE(fetched);
            const std::wstring received = Ask(fetched.Get(), L"TextMessage");
            const bool isAlone = text.empty() || html.empty();
            for (const std::wstring& part : {text, html}) {
                EXPECT_TRUE(isAlone ? received == Encoded(text + html)
                                    : received.find(L"\r\n" + Encoded(part) + L"\r\n--") !=
                                          std::wstring::npos);
            }
        }
    }
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
        ExpectAnswers(mail.Get(), {{L"Subject=", {row.subject}},
                                   {L"TextMessage=", {row.text}},
                                   {L"HtmlMessage=", {row.html}}});
        EXPECT_EQ(Send(kOpenPort), L"SMTP_SUCCESS") << std::wstring(row.subject);
    }
}

} // namespace
} // namespace tervane::test
