#include "ZelBase/text/Base64.h"
#include "ZelBase/text/TextConversion.h"
#include "ZelNet/SourceCode/mail/AMIME.h"
#include "ZelNet/SourceCode/mail/MailDate.h"

#include <gtest/gtest.h>

namespace ZelNet {
namespace {

const std::string kBoundary = "3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472";

TEST(Mime, WritesEverythingThatIsSetInOrder) {
    AMIME message(AMIME::Level::kPart);
    message.AddHeader("To", "a@b.example");
    message.AddHeader("", " continued");
    message.AddHeader("No:Name", "is dropped");
    message.AddHeader("", " with all of it");
    message.AddHeader("Subject", "");
    message.SetContentType(MimeContentType::kHtml, "utf-8");
    message.SetTransferEncoding(MimeTransferEncoding::kQuotedPrintable);
    message.SetDescription("a picture");
    message.SetContentId("<1@b.example>");
    message.SetExtraHeaders("X-One: 1\r\nX-Two: 2\r\n");
    EXPECT_EQ(message.HeaderBlock(), "To: a@b.example\r\n continued\r\nSubject: \r\n"
                                     "Content-type: text/html; charset=utf-8\r\n"
                                     "Content-Transfer-Encoding: Quoted-Printable\r\n"
                                     "Content-Description: a picture\r\n"
                                     "Content-ID: <1@b.example>\r\n"
                                     "X-One: 1\r\nX-Two: 2\r\n\r\n");
}

TEST(Mime, KnowsItsEnumeratorsAndTakesTheFirstForOthers) {
    const auto expectEach = [](auto set, const char* const(&texts)[9], int count) {
        for (int number = -1; number <= count; ++number) {
            AMIME message;
            set(message, number);
            const char* text = texts[number < count ? std::max(number, 0) : 0];
            EXPECT_NE(message.HeaderBlock().find(text + std::string("\r\n")), std::string::npos)
                << text;
        }
    };
    expectEach([](AMIME& m, int n) { m.SetContentType(static_cast<MimeContentType>(n)); },
               {"type: text/plain", "type: text/html", "type: text/richtext", "type: text/xml",
                "type: image/gif", "type: image/jpeg", "type: image/png"},
               7);
    expectEach([](AMIME& m, int n) { m.SetTransferEncoding(static_cast<MimeTransferEncoding>(n)); },
               {"Encoding: 7bit", "Encoding: base64", "Encoding: Quoted-Printable"}, 3);
    const std::string mixed = "type: multipart/mixed;boundary=" + kBoundary;
    const std::string alternative = "type: multipart/alternative;boundary=" + kBoundary;
    expectEach([](AMIME& m, int n) { m.SetMultipart(static_cast<MimeMultipartMode>(n)); },
               {mixed.c_str(), alternative.c_str()}, 2);
}

TEST(Mime, EncodesABodyIntoOneLineInPiecesOfAnySize) {
    std::wstring text = L"a\xD800\u00E9\u4E2D\U0001F600\r\n.\r\n\xDC00";
    for (int i = 0; i < 9; ++i) {
        text += text + L"b";
    }
    AMIME message;
    message.SetBody(WideMailText{nullptr, text});
    const std::string whole = ZelBase::Base64Encode(ZelBase::Utf16ToUtf8(text));
    for (const std::size_t room : {12, 13, 512, 2048}) {
        const auto source = MimeText::Read(message.TextToSend());
        std::string read;
        while (source->Remaining() > 0) {
            char piece[2048];
            EXPECT_EQ(whole.size() - read.size(), source->Remaining());
            const std::size_t size = source->Read(piece, room);
            ASSERT_TRUE(size > 0 && size <= room) << room;
            read.append(piece, size);
        }
        EXPECT_EQ(whole, read) << room;
    }
}

TEST(Mime, PutsPartsBetweenDelimiters) {
    AMIME message;
    message.SetMultipart(MimeMultipartMode::kAlternative);
    for (const char* body : {"<b>h</b>", ""}) {
        auto part = std::make_unique<AMIME>(AMIME::Level::kPart);
        part->SetTransferEncoding(MimeTransferEncoding::kBase64);
        part->SetBody(body, true);
        message.AddPart(std::move(part));
    }
    const std::string partHeader =
        "Content-type: text/plain\r\nContent-Transfer-Encoding: base64\r\n\r\n";
    const std::string expected = "--" + kBoundary + "\r\n" + partHeader + "PGI+aDwvYj4=\r\n--" +
                                 kBoundary + "\r\n" + partHeader + "\r\n--" + kBoundary + "--";
    EXPECT_EQ(message.Body(), expected);
    EXPECT_EQ(message.Body(), expected); // composed once
}

TEST(MailDates, AreInUtcAndTwoForms) {
    using namespace std::chrono;
    const auto early = sys_days(2003y / March / 5) + 7h + 4min + 9s + 999ms;
    EXPECT_EQ(MailDate(early), "5 Mar 2003 07:04:09 -0000 (GMT)");
    EXPECT_EQ(PlainMailDate(early), "5 Mar 2003 7:4:9 UT");
    EXPECT_EQ(MailDate(sys_days(2024y / December / 31) + 24h - 1s),
              "31 Dec 2024 23:59:59 -0000 (GMT)");
}

} // namespace
} // namespace ZelNet
