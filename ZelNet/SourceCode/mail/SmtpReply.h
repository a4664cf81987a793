#pragma once

#include <string>
#include <string_view>

namespace ZelNet {

// One line of a server's reply (RFC 5321, section 4.2): three digits, a hyphen when more lines
// follow, and text.
struct SmtpReplyLine {
    // 1xx, 2xx or 3xx. Which of these it is makes no difference to any command, on purpose: the
    // servers of the field do not agree on the exact codes.
    bool accepted = false;
    bool hasMore = false;
    std::string_view text;
};

// Every line can be read, also none at all. The text points into `line`.
SmtpReplyLine ReadSmtpReply(std::string_view line);

// Doubles the dot of each line that consists of one, so that it does not end the text (RFC 5321,
// section 4.5.2). Lines that only begin with a dot are left alone, unlike in the RFC: deliberate.
// `fromStart` tells whether the text's very first line counts too.
void DoubleLoneDots(std::string& text, bool fromStart);

} // namespace ZelNet
