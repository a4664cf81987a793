// EmailData as scripts use it: late-bound, and by its interface where only that shows the result.

#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

namespace tervane::test {
namespace {

class EmailDataTest : public testing::Test {
protected:
    long Add(const wchar_t* line) { return Call(object.Get(), L"AddHeader", {line}).Number(); }
    std::wstring Line(int index) { return Call(object.Get(), L"GetHeader", {index}).Text(); }
    std::wstring Find(const wchar_t* name) {
        return Call(object.Get(), L"GetHeaderByName", {name}).Text();
    }
    long Count() { return Read(object.Get(), L"NumHeaders").Number(); }

    Apartment apartment;
    ComPtr<IDispatch> object = TestComponent::Get().Create(__uuidof(::EmailData));
    ComPtr<IEmailData> direct = QueryFor<IEmailData>(object.Get());
};

TEST_F(EmailDataTest, SeesItsPropertiesAsHeaders) {
    const std::pair<const wchar_t*, const wchar_t*> properties[] = {
        {L"To", L"To"}, {L"From", L"From"}, {L"Subject", L"Subject"}, {L"XMailer", L"X-Mailer"},
        {L"Cc", L"Cc"}, {L"Bcc", L"Bcc"},   {L"Date", L"Date"}};
    int index = 0;
    for (const auto& [property, name] : properties) {
        EXPECT_EQ(Read(object.Get(), property).Text(), L"") << property;
        Write(object.Get(), property, L"first \u00E9\u4E2D");
        Write(object.Get(), property, L"v: w");
        EXPECT_EQ(Read(object.Get(), property).Text(), L"v: w") << property;
        EXPECT_EQ(Line(index), std::wstring(name) + L": v: w");
        EXPECT_EQ(Count(), ++index);
    }
}

TEST_F(EmailDataTest, FindsTheFirstLineOfAName) {
    for (const wchar_t* line : {L"no colon", L"X-Test:value", L"", L"Subject: a", L"subject: b",
                                L": nameless", L"\u00C9: upper"}) {
        EXPECT_EQ(Add(line), 1); // not -1
    }
    EXPECT_EQ(Find(L"no colon"), L"");
    EXPECT_EQ(Find(L"X-Test"), L"");
    EXPECT_EQ(Find(L"X-Test:value"), L"");
    EXPECT_EQ(Find(L"SUBJECT"), L"a");
    EXPECT_EQ(Find(L""), L"nameless");
    EXPECT_EQ(Find(L"\u00C9"), L"upper");
    EXPECT_EQ(Find(L"\u00E9"), L""); // only ASCII letters are alike in both cases
    EXPECT_EQ(Call(object.Get(), L"SetHeaderByName", {L"sUbject", L"x"}).Number(), 1);
    EXPECT_EQ(Line(3), L"sUbject: x");
    EXPECT_EQ(Line(4), L"subject: b");
    EXPECT_EQ(
        Call(object.Get(), L"SetHeaderByName", {L"X-New", std::wstring(1 << 20, L'y')}).Number(),
        1);
    EXPECT_EQ(Find(L"x-new").size(), 1u << 20);
    EXPECT_EQ(Count(), 8);
}

TEST_F(EmailDataTest, GrowsAndShrinks) {
    for (int i = 0; i < 25; ++i) {
        EXPECT_EQ(Add((L"N: " + std::to_wstring(i)).c_str()), 1);
    }
    EXPECT_EQ(Line(24), L"N: 24");
    VARIANT_BOOL result = 77;
    EXPECT_EQ(direct->RemoveHeader(10, &result), S_OK);
    EXPECT_EQ(result, 77); // success leaves the caller's value
    EXPECT_EQ(Line(9), L"N: 9");
    EXPECT_EQ(Line(10), L"N: 11");
    EXPECT_EQ(Line(23), L"N: 24");
    EXPECT_EQ(Count(), 24);
    for (long index : {-1L, 24L, LONG_MAX, LONG_MIN}) {
        result = 77;
        EXPECT_EQ(direct->RemoveHeader(index, &result), S_FALSE);
        EXPECT_EQ(result, VARIANT_FALSE);
        UniqueBstr line;
        EXPECT_EQ(direct->GetHeader(index, line.Put()), S_FALSE);
        EXPECT_TRUE(line && TextOf(line.Get()).empty());
    }
    EXPECT_EQ(Call(object.Get(), L"ClearAllHeaders").status, S_OK);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(Line(0), L"");
    EXPECT_EQ(Add(L"A: b"), 1);
    EXPECT_EQ(Find(L"a"), L"b");
}

TEST_F(EmailDataTest, KeepsBodiesUnchanged) {
    const std::wstring body(L"a\0b\r\n.\r\n\xD800 \U0001F600", 12);
    for (const wchar_t* property : {L"TextMessage", L"HtmlMessage"}) {
        EXPECT_EQ(Read(object.Get(), property).Text(), L"");
        Write(object.Get(), property, body);
        EXPECT_EQ(Read(object.Get(), property).Text(), body);
        Write(object.Get(), property, L"");
        EXPECT_EQ(Read(object.Get(), property).Text(), L"");
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(EmailDataTest, WritesTheDateInUtc) {
    SYSTEMTIME before, after;
    GetSystemTime(&before);
    EXPECT_EQ(Call(object.Get(), L"SetDateToNow").status, S_OK);
    GetSystemTime(&after);
    const std::wstring date = Read(object.Get(), L"Date").Text();
    int day = 0, year = 0, hour = 0, minute = 0, second = 0;
    wchar_t month[4], rest[16];
    ASSERT_EQ(swscanf(date.c_str(), L"%d %3ls %d %2d:%2d:%2d %15l[^\n]", &day, month, &year, &hour,
                      &minute, &second, rest),
              7)
        << std::string(date.begin(), date.end());
    EXPECT_EQ(std::wstring(rest), L"-0000 (GMT)");
    EXPECT_TRUE(day == before.wDay || day == after.wDay);
    EXPECT_EQ(year, after.wYear);
    const int now = after.wHour * 60 + after.wMinute;
    EXPECT_LE((now - (hour * 60 + minute) + 1440) % 1440, 1);
}

TEST_F(EmailDataTest, DoesNothingWithoutAPlaceForTheResult) {
    VARIANT_BOOL result = 0;
    EXPECT_EQ(direct->SetHeaderByName(nullptr, nullptr, &result), S_OK); // null texts are empty
    EXPECT_EQ(Line(0), L": ");
    EXPECT_EQ(direct->RemoveHeader(0, nullptr), S_FALSE);
    EXPECT_EQ(Count(), 1);
}

TEST_F(EmailDataTest, TellsAMissingHeaderFromAnEmptyOne) {
    Add(L"Cc: ");
    UniqueBstr value;
    EXPECT_EQ(direct->get_Cc(value.Put()), S_OK);
    EXPECT_EQ(direct->get_Bcc(value.Put()), S_FALSE);
    EXPECT_TRUE(value);
}

} // namespace
} // namespace tervane::test
