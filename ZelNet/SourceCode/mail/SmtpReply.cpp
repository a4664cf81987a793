#include "ZelNet/SourceCode/mail/SmtpReply.h"

namespace ZelNet {
namespace {

constexpr std::size_t kTextStart = 4;

} // namespace

SmtpReplyLine ReadSmtpReply(std::string_view line) {
    SmtpReplyLine reply;
    reply.accepted = !line.empty() && line[0] >= '1' && line[0] <= '3';
    reply.hasMore = line.size() > 3 && line[3] == '-';
    reply.text = line.substr(line.size() < kTextStart ? line.size() : kTextStart);
    return reply;
}

// One pass: the line end after one dot is also the one before the next line.
void DoubleLoneDots(std::string& text, bool fromStart) {
    constexpr std::string_view kLoneDot = "\r\n.\r\n";
    std::string doubled;
    std::size_t copied = 0;
    if (fromStart && text.starts_with(kLoneDot.substr(2))) {
        doubled += '.';
    }
    for (auto found = text.find(kLoneDot); found != std::string::npos;
         found = text.find(kLoneDot, found + 3)) {
        if (doubled.empty()) {
            doubled.reserve(text.size() + text.size() / 4);
        }
        doubled.append(text, copied, found + 3 - copied) += '.';
        copied = found + 3;
    }
    if (!doubled.empty()) {
        doubled.append(text, copied);
        text = std::move(doubled);
    }
}

} // namespace ZelNet
