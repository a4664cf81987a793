// SmtpCtl and PopCtl with the real servers of tests/network/mail.sh, which runs these tests.

#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace tervane::test {
namespace {

constexpr DWORD kPatience = 60000;
constexpr int kOpenPort = 25;
constexpr int kAuthenticatingPort = 587;

// RFC 4648, of a text without line breaks.
std::wstring Decoded(const std::wstring& base64) {
    const std::wstring alphabet =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (wchar_t character : base64.substr(0, base64.find(L'='))) {
        bits = bits << 6 | static_cast<unsigned>(alphabet.find(character));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count);
        }
    }
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<size_t>(length), 0);
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

// The body of the part with that content type in the body of a message; the whole if it has none.
std::wstring PartOf(const std::wstring& body, const std::wstring& type) {
    const size_t header = body.find(L"Content-type: " + type);
    if (header == std::wstring::npos) {
        return body;
    }
    const size_t start = body.find(L"\r\n\r\n", header) + 4;
    return body.substr(start, body.find(L"\r\n", start) - start);
}

class MailServers : public testing::Test {
protected:
    void SetUp() override {
        if (!std::getenv("TERVANE_MAIL_SERVERS")) {
            GTEST_SKIP() << "run by tests/network/mail.sh, with the servers it needs";
        }
        Advise(smtp.Get(), &sent);
        Advise(pop.Get(), &read);
        Write(smtp.Get(), L"Login", L"to");
        Write(pop.Get(), L"Login", L"to");
        Write(pop.Get(), L"Password", L"s3cret");
        Write(smtp.Get(), L"SmtpServer", L"mail.example");
        Write(pop.Get(), L"PopServer", L"127.0.0.1");
        Write(mail.Get(), L"From", L"Somebody <from@a.example>");
        Write(mail.Get(), L"To", L"to@b.example");
        Write(smtp.Get(), L"EmailData", Variant::FromObject(AddReference(mail.Get())).Get());
    }
    void TearDown() override {
        for (RecordingSink* sink : {&sent, &read}) {
            for (size_t i = 0; i < sink->Count(); ++i) {
                (*sink)[i].arguments.clear();
            }
        }
    }

    // Logs in where that is asked for.
    std::wstring Send(int port) {
        return Send(port, port == kAuthenticatingPort ? L"s3cret" : L"");
    }
    std::wstring Send(int port, const wchar_t* password) {
        Write(smtp.Get(), L"Port", port);
        Write(smtp.Get(), L"Password", password);
        const size_t before = sent.Count();
        EXPECT_EQ(Call(smtp.Get(), L"SendMail").Number(), 1);
        EXPECT_TRUE(sent.WaitFor(before + 1, kPatience));
        return Read(smtp.Get(), L"StatusCode").Text();
    }
    // Runs an operation to its end; the first argument of its event.
    long Do(const wchar_t* method, std::initializer_list<Argument> arguments = {}) {
        const size_t before = read.Count();
        EXPECT_EQ(Call(pop.Get(), method, arguments).Number(), VARIANT_TRUE) << method;
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
    ComPtr<IDispatch> mail = TestComponent::Get().Create(__uuidof(::EmailData));
    ComPtr<IDispatch> smtp = TestComponent::Get().Create(__uuidof(::SmtpCtl));
    ComPtr<IDispatch> pop = TestComponent::Get().Create(__uuidof(::PopCtl));
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
                const std::wstring received = Read(fetched.Get(), L"TextMessage").Text();
                EXPECT_EQ(Decoded(PartOf(received, withHtml ? L"text/html" : L"text/plain")),
                          withHtml ? html : text);
                EXPECT_EQ(Decoded(PartOf(received, withText ? L"text/plain" : L"text/html")),
                          withText ? text : html);
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
    EXPECT_TRUE(Decoded(Read(fetched.Get(), L"TextMessage").Text()) == text);
}

TEST_F(MailServers, NameWhatIsWrong) {
    EXPECT_EQ(Send(kAuthenticatingPort, L"wrong"), L"SMTP_AUTH_ERROR");
    EXPECT_EQ(Send(kOpenPort, L"s3cret"), L"SMTP_CONNECT_ERROR"); // it refuses AUTH itself
    EXPECT_EQ(Send(kAuthenticatingPort, L""), L"SMTP_UNEXPECTED");
    Write(mail.Get(), L"To", L"nobody@b.example");
    EXPECT_EQ(Send(kOpenPort), L"SMTP_UNEXPECTED");
    Write(pop.Get(), L"Password", L"wrong");
    EXPECT_EQ(Do(L"Connect"), 0);
    EXPECT_EQ(Read(pop.Get(), L"LastError").Text(), L"POP_AUTH_ERROR");

    Write(smtp.Get(), L"SmtpServer", L"unknown.example");
    EXPECT_EQ(Send(kOpenPort), L"SMTP_TERMINATED");
    Write(pop.Get(), L"PopServer", L"unknown.example");
    EXPECT_EQ(Do(L"Connect"), 0);
    EXPECT_EQ(Read(pop.Get(), L"LastError").Text(), L"POP_CONNECT_ERROR");
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
            EXPECT_EQ(Call(smtp.Get(), L"SendMail").Number(), 1);
            EXPECT_EQ(Call(pop.Get(), L"Connect").Number(), VARIANT_TRUE);
            Sleep(wait);
            const DWORD start = GetTickCount();
            EXPECT_EQ(Call(smtp.Get(), L"Abort").Number(), VARIANT_TRUE);
            EXPECT_EQ(Call(pop.Get(), L"AbortCurrentAction").Number(), VARIANT_TRUE);
            EXPECT_TRUE(sent.WaitFor(before + 1, kPatience));
            EXPECT_TRUE(read.WaitFor(readBefore + 1, kPatience));
            EXPECT_LT(GetTickCount() - start, 2000u);
            EXPECT_EQ(Read(smtp.Get(), L"StatusCode").Text(), L"SMTP_ABORTED");
            EXPECT_EQ(Read(pop.Get(), L"LastError").Text(), L"POP_TERMINATED");
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
