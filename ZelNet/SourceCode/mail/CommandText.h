#pragma once

// What texts of a user may stand in a command of SMTP or POP3.

#include <algorithm>
#include <string_view>

namespace ZelNet {

// Whether a login or a password can be sent: a line break would make a command of what follows it,
// and a zero character would cut it short.
inline bool IsCredential(std::string_view text) noexcept {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == text.npos;
}

// Whether the text can stand between the angle brackets of MAIL and RCPT (RFC 5321, section 4.1.2):
// it has neither brackets nor blanks nor control characters, of either half of Latin-1. Quoted
// blanks are not worth their risk.
inline bool IsEnvelopeAddress(std::string_view text) noexcept {
    return std::none_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte & 0x7F) <= ' ' || byte == 0x7F || byte == '<' || byte == '>';
    });
}

} // namespace ZelNet
