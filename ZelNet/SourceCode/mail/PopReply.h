#pragma once

#include <cstdint>
#include <string_view>

namespace ZelNet {

// Whether a status line (RFC 1939, section 3) tells success. Only its first character counts.
bool IsPositivePopReply(std::string_view line);

// The drop listing of STAT (RFC 1939, section 5): the first two numbers in the line, whatever
// stands around them. What is missing is 0; what is too large for the type is its largest value.
struct PopDropListing {
    std::uint32_t count = 0;
    std::uint32_t totalSize = 0;
};
PopDropListing ReadDropListing(std::string_view line);

} // namespace ZelNet
