// EmailData as scripts use it: late-bound, and by its interface where only that shows the result.

#include "support/Classes.h"
#include "support/ObjectTest.h"

namespace tervane::test {
namespace {

constexpr wchar_t kDone[] = L"other true"; // 1, not -1

class EmailDataTest : public ObjectTest {
protected:
    EmailDataTest() : ObjectTest(L"EmailData") {}
    // Compiled callers have it as long as the object.
    IEmailData* Direct() { return QueryFor<IEmailData>(object_.Get()).Get(); }
};

TEST_F(EmailDataTest, SeesItsPropertiesAsHeaders) {
    int index = 0;
    for (const std::wstring property :
         {L"To", L"From", L"Subject", L"XMailer", L"Cc", L"Bcc", L"Date"}) {
        const std::wstring name = property == L"XMailer" ? L"X-Mailer" : property;
        Answers({{property, {}, L""},
                 {property + L"=", {L"first \u00E9\u4E2D"}},
                 {property + L"=", {L"v: w"}},
                 {property, {}, L"v: w"},
                 {L"GetHeader", {index}, name + L": v: w"},
                 {L"NumHeaders", {}, std::to_wstring(++index)}});
    }
}

TEST_F(EmailDataTest, FindsTheFirstLineOfAName) {
    for (const wchar_t* line : {L"no colon", L"X-Test:value", L"", L"Subject: a", L"subject: b",
                                L": nameless", L"\u00C9: upper", L"Cc: "}) {
        Answers({{L"AddHeader", {line}, kDone}});
    }
    const std::wstring huge(1 << 20, L'y');
    Answers({{L"GetHeaderByName", {L"SUBJECT"}, L"a"},
             {L"GetHeaderByName", {L""}, L"nameless"},
             {L"GetHeaderByName", {L"\u00C9"}, L"upper"},
             {L"Cc", {}, L""},
             {L"SetHeaderByName", {L"sUbject", L"x"}, kDone},
             {L"GetHeader", {3}, L"sUbject: x"},
             {L"GetHeader", {4}, L"subject: b"},
             {L"SetHeaderByName", {L"X-New", huge}, kDone},
             {L"GetHeaderByName", {L"x-new"}, huge},
             {L"NumHeaders", {}, L"9"}});
    UniqueBstr missing;
    EXPECT_EQ(S_FALSE, Direct()->get_Bcc(missing.Put()));
    EXPECT_TRUE(missing);
    for (const wchar_t* name :
         {L"no colon", L"X-Test", L"X-Test:value", L"\u00E9"}) { // ASCII letters only are alike
        Answers({{L"GetHeaderByName", {name}, L""}});
    }
}

TEST_F(EmailDataTest, GrowsAndShrinks) {
    for (int i = 0; i < 25; ++i) {
        Answers({{L"AddHeader", {L"N: " + std::to_wstring(i)}, kDone}});
    }
    VARIANT_BOOL result = 77;
    EXPECT_EQ(S_OK, Direct()->RemoveHeader(10, &result));
    EXPECT_EQ(77, result); // success leaves the caller's value
    Answers({{L"GetHeader", {9}, L"N: 9"},
             {L"GetHeader", {10}, L"N: 11"},
             {L"GetHeader", {23}, L"N: 24"},
             {L"NumHeaders", {}, L"24"}});
    for (const long index : {-1L, 24L, LONG_MAX, LONG_MIN}) {
        result = 77;
        EXPECT_EQ(S_FALSE, Direct()->RemoveHeader(index, &result));
        EXPECT_EQ(VARIANT_FALSE, result);
        UniqueBstr line;
        EXPECT_EQ(S_FALSE, Direct()->GetHeader(index, line.Put()));
        EXPECT_TRUE(line && TextOf(line.Get()).empty());
    }
    EXPECT_EQ(S_FALSE, Direct()->RemoveHeader(0, nullptr)); // and does nothing
    Answers({{L"NumHeaders", {}, L"24"},
             {L"ClearAllHeaders"},
             {L"NumHeaders", {}, L"0"},
             {L"AddHeader", {L"A: b"}, kDone},
             {L"GetHeaderByName", {L"a"}, L"b"}});
    EXPECT_EQ(S_OK, Direct()->SetHeaderByName(nullptr, nullptr, &result)); // null texts are empty
    Answers({{L"GetHeader", {1}, L": "}});
}

TEST_F(EmailDataTest, KeepsBodiesUnchanged) {
    const std::wstring body(L"a\0b\r\n.\r\n\xD800 \U0001F600", 12);
    Answers({{L"TextMessage", {}, L""},
             {L"TextMessage=", {body}},
             {L"HtmlMessage=", {L"other"}},
             {L"TextMessage", {}, body},
             {L"HtmlMessage", {}, L"other"},
             {L"TextMessage=", {L""}},
             {L"TextMessage", {}, L""},
             {L"NumHeaders", {}, L"0"}});
}

TEST_F(EmailDataTest, WritesTheDateInUtc) {
    SYSTEMTIME now;
    std::wstring date;
    GetSystemTime(&now);
    for (WORD minute = 60; minute != now.wMinute; GetSystemTime(&now)) { // none passed meanwhile
        minute = now.wMinute;
        Answers({{L"SetDateToNow"}});
        date = Ask(L"Date");
    }
    constexpr const wchar_t* kMonths[] = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                          L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
    wchar_t expected[40];
    swprintf(expected, std::size(expected), L"%d %ls %d %02d:%02d:", now.wDay,
             kMonths[now.wMonth - 1], now.wYear, now.wHour, now.wMinute);
    EXPECT_EQ(expected, date.substr(0, std::wstring(expected).size()));
    EXPECT_EQ(L" -0000 (GMT)", date.substr(date.size() - 12));
}

} // namespace
} // namespace tervane::test
