// Sources: ZelNet/SourceCode/SmtpReply.cpp ZelNet/SourceCode/PopReply.cpp
// Sources: ZelNet/SourceCode/AMIME.cpp ZelBase/Base64.cpp
//
// Any bytes as the line of a mail server and as the body of a message: replies are read inside the
// line, and no body can end the text before its time.

#include "ZelNet/SourceCode/AMIME.h"
#include "ZelNet/SourceCode/PopReply.h"
#include "ZelNet/SourceCode/SmtpReply.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::string_view kLoneDot = "\r\n.\r\n";

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

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
    Compose(text);
    return 0;
}
