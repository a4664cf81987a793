// Sources: ZelNet/SourceCode/mail/SmtpStates.cpp ZelNet/SourceCode/mail/PopStates.cpp
// Sources: ZelNet/SourceCode/mail/AMIME.cpp ZelNet/SourceCode/mail/MimeText.cpp
// Sources: ZelNet/SourceCode/mail/TextMark.cpp
// Sources: ZelBase/text/Base64.cpp ZelBase/text/TextConversion.cpp
//
// Any bytes as the line of a mail server and as headers and body of a message: replies are read
// inside the line, no header makes another one, and no body can end the text before its time.

#include "ZelNet/SourceCode/mail/AMIME.h"
#include "ZelNet/SourceCode/mail/PopStates.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"
#include "ZelNet/SourceCode/mail/TextMark.h"
#include "fuzz/require.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::string_view kLoneDot = "\r\n.\r\n";

void ReadReplies(std::string_view line) {
    const ZelNet::SmtpReplyLine smtp = ZelNet::ReadSmtpReply(line);
    Require(smtp.text == line.substr(std::min<std::size_t>(line.size(), 4)));
    Require(!smtp.accepted || (line[0] >= '1' && line[0] <= '3'));
    const ZelNet::PopDropListing listing = ZelNet::ReadDropListing(line);
    const bool hasNumber = line.find_first_of("123456789") != line.npos;
    Require(hasNumber || (listing.count == 0 && listing.totalSize == 0));
    Require(ZelNet::IsPositivePopReply(line) == (!line.empty() && line[0] == '+'));
}

// Without the dots that were added the text is the one before.
void DoubleDots(const std::string& text, bool fromStart) {
    std::string doubled = text;
    ZelNet::DoubleLoneDots(doubled, fromStart);
    Require(doubled.find(kLoneDot) == doubled.npos);
    Require(!fromStart || !doubled.starts_with(kLoneDot.substr(2)));
    std::string again = doubled;
    ZelNet::DoubleLoneDots(again, fromStart);
    Require(again == doubled);
    std::size_t position = 0;
    for (const char character : doubled) {
        const bool isAdded = position >= text.size() || text[position] != character;
        Require(!isAdded || character == '.');
        position += isAdded ? 0 : 1;
    }
    Require(position == text.size());
}

// Each of the three is at most one line.
void AddHeaders(const std::string& text) {
    ZelNet::AMIME message;
    const std::string before = message.HeaderBlock();
    message.AddHeader("X-Any", text);
    message.AddHeader({}, text);
    message.AddHeader(text, "x");
    const std::string block = message.HeaderBlock();
    const std::string lines = block.substr(0, block.size() - before.size());
    Require(block.ends_with(before) && lines.ends_with("\r\n"));
    const auto breaks = std::count(lines.begin(), lines.end(), '\n');
    Require(breaks == std::count(lines.begin(), lines.end(), '\r'));
    Require(breaks == (text.empty() || ZelNet::IsHeaderName(text) ? 3 : 2));
}

void FindMarks(const std::string& text) {
    const std::size_t third = text.size() / 3;
    const std::string middle = text.substr(third, third);
    const std::string behind = text.substr(third == 0 ? 0 : third + 1);
    const ZelNet::TextMark mark(middle);
    Require(mark.IsIn(text) == !middle.empty());
    Require(mark.IsIn(behind) == (!middle.empty() && behind.find(middle) != behind.npos));
}

void Compose(const std::string& body) {
    ZelNet::AMIME message;
    message.SetMultipart(ZelNet::MimeMultipartMode::kAlternative);
    for (const bool encode : {true, false}) {
        auto part = std::make_unique<ZelNet::AMIME>(ZelNet::AMIME::Level::kPart);
        part->SetBody(body, encode);
        if (encode) {
            Require(part->Body().size() == (body.size() + 2) / 3 * 4);
            Require(part->Body().find_first_of("\r\n.-") == std::string::npos);
        }
        message.AddPart(std::move(part));
    }
    const std::string composed = message.Body();
    Require(composed.find(body) != std::string::npos);
    Require(composed.ends_with("--") && message.Body() == composed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ReadReplies(text);
    DoubleDots(text, true);
    DoubleDots(text, false);
    AddHeaders(text);
    FindMarks(text);
    Compose(text);
    return 0;
}
