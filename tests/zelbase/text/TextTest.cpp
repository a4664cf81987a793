#include "ZelBase/text/AnsiText.h"
#include "ZelBase/text/Base64.h"
#include "ZelBase/text/SecretText.h"
#include "ZelBase/text/TextConversion.h"

#include <gtest/gtest.h>

namespace ZelBase::test {
namespace {

TEST(Text, BecomesUtf8) {
    const std::pair<std::wstring, std::string> rows[] = {
        {std::wstring(L"a\0b\x7f", 4), std::string("a\0b\x7f", 4)},
        {L"\x80\x7ff", "\xc2\x80\xdf\xbf"},
        {L"\x800\xffff", "\xe0\xa0\x80\xef\xbf\xbf"},
        {L"\xd800\xdc00\xdbff\xdfff!", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf!"},
        // Surrogates alone, in the wrong order, and at the end.
        {L"\xdc00\xd800x", "\xef\xbf\xbd\xef\xbf\xbdx"},
        {L"\xd800\xd800\xdc00\xd800", "\xef\xbf\xbd\xf0\x90\x80\x80\xef\xbf\xbd"},
    };
    for (const auto& [wide, utf8] : rows) {
        EXPECT_EQ(Utf16ToUtf8(wide), utf8);
    }
}

TEST(Text, BecomesBytes) {
    EXPECT_EQ(Utf16ToBytes(std::wstring(L"a\0\xff", 3)), std::string("a\0\xff", 3));
    EXPECT_EQ(Utf16ToBytes(L"\xff01\xff20\xff21\xff5e"), "!@A~");
    EXPECT_EQ(Utf16ToBytes(L"\xff00\xff5f\x100\x20ac"), "????");
    EXPECT_EQ(Utf16ToBytes(L"\xd83d\xde00\xd83d"), "??"); // one character and a lone half
}

TEST(Text, GoesThroughTheAnsiCodePage) {
    const std::wstring text(L"caf\xe9\0b", 6);
    EXPECT_EQ(AnsiToWide(WideToAnsi(text)), text);
    EXPECT_EQ(WideToAnsi(L""), "");
    EXPECT_EQ(WideToAnsi(L"x\x4e00y"), "x?y"); // not in any western code page
}

// RFC 4648, section 10, and what lies outside of ASCII.
TEST(Text, BecomesBase64) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {std::string("\0\xff\xfe\xfb\xef\xff", 6), "AP/+++//"},
    };
    for (const auto& [data, base64] : rows) {
        EXPECT_EQ(Base64Encode(data), base64);
    }
    const std::string longText = Base64Encode(std::string(30000, 'x'));
    EXPECT_EQ(longText.size(), 40000u);
    EXPECT_EQ(longText.find_first_of("\r\n"), std::string::npos);
}

TEST(SecretText, IsATextWhateverBecomesOfIt) {
    SecretText text(std::string_view("a\0b", 3));
    const SecretText copy = text;
    text.Append(std::string(100, 'x'));
    EXPECT_EQ(text.Text(), std::string("a\0b", 3) + std::string(100, 'x'));
    SecretText moved = std::move(text);
    EXPECT_EQ(moved.Text().size(), 103u);
    moved = copy;
    EXPECT_EQ(moved.Text(), copy.Text());
    EXPECT_EQ(moved.CStr()[3], 0);
    moved.Clear();
    EXPECT_TRUE(moved.IsEmpty());
    EXPECT_STREQ(moved.CStr(), "");
    EXPECT_EQ(NarrowSecret(L"\xff01\xe9\x4e00").Text(), "!\xe9?");
}

} // namespace
} // namespace ZelBase::test
