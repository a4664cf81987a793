#include "ZelNet/SourceCode/mail/AMIME.h"
#include "ZelNet/SourceCode/mail/MailDate.h"

#include <gtest/gtest.h>

namespace ZelNet {
namespace {

const std::string kBoundary = "3FC440BC44204c7d8CB9E436D5F4DA71308C06271A0749d3885DF264A65A3472";

TEST(Mime, DescribesAPlainMessageByDefault) {
    AMIME message;
    message.SetBody("as it is\r\n", false);
    EXPECT_EQ(message.HeaderBlock(), "MIME-Version: 1-0\r\n"
                                     "Content-type: text/plain\r\n"
                                     "Content-Transfer-Encoding: 7bit\r\n\r\n");
    EXPECT_EQ(message.Body(), "as it is\r\n");
}

TEST(Mime, WritesEverythingThatIsSetInOrder) {
    AMIME message(AMIME::Level::kPart);
    message.AddHeader("To", "a@b.example");
    message.AddHeader("", " continued");
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
    const std::pair<int, const char*> types[] = {
        {0, "text/plain"}, {1, "text/html"},  {2, "text/richtext"},
        {3, "text/xml"},   {4, "image/gif"},  {5, "image/jpeg"},
        {6, "image/png"},  {7, "text/plain"}, {-1, "text/plain"}};
    for (const auto& [number, text] : types) {
        AMIME message;
        message.SetContentType(static_cast<MimeContentType>(number));
        EXPECT_NE(message.HeaderBlock().find(std::string("type: ") + text + "\r\n"),
                  std::string::npos)
            << number;
    }
    const std::pair<int, const char*> encodings[] = {
        {0, "7bit"}, {1, "base64"}, {2, "Quoted-Printable"}, {3, "7bit"}, {-1, "7bit"}};
    for (const auto& [number, text] : encodings) {
        AMIME message;
        message.SetTransferEncoding(static_cast<MimeTransferEncoding>(number));
        EXPECT_NE(message.HeaderBlock().find(std::string("Encoding: ") + text + "\r\n"),
                  std::string::npos)
            << number;
    }
    const std::pair<int, const char*> modes[] = {
        {0, "mixed"}, {1, "alternative"}, {2, "mixed"}, {-1, "mixed"}};
    for (const auto& [number, text] : modes) {
        AMIME message;
        message.SetMultipart(static_cast<MimeMultipartMode>(number));
        EXPECT_NE(message.HeaderBlock().find(std::string("type: multipart/") + text +
                                             ";boundary=" + kBoundary + "\r\n"),
                  std::string::npos)
            << number;
    }
}

TEST(Mime, EncodesABodyIntoOneLineHoweverLong) {
    AMIME message;
    message.SetBody(std::string(100'000, 'x') + "\r\n.\r\n", true);
    EXPECT_EQ(message.Body().size(), 133'340u);
    EXPECT_EQ(message.Body().find_first_of("\r\n."), std::string::npos);
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
