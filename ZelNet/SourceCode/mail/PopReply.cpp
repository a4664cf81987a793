#include "ZelNet/SourceCode/mail/PopReply.h"

#include <algorithm>

namespace ZelNet {
namespace {

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

// Takes the first run of digits and all before it off `text`.
std::uint32_t TakeNumber(std::string_view& text) {
    const auto first = std::find_if(text.begin(), text.end(), IsDigit);
    const auto last = std::find_if_not(first, text.end(), IsDigit);
    std::uint64_t number = 0;
    for (auto digit = first; digit != last; ++digit) {
        number =
            std::min<std::uint64_t>(number * 10 + static_cast<unsigned>(*digit - '0'), UINT32_MAX);
    }
    text.remove_prefix(static_cast<std::size_t>(last - text.begin()));
    return static_cast<std::uint32_t>(number);
}

} // namespace

bool IsPositivePopReply(std::string_view line) {
    return line.starts_with('+');
}

PopDropListing ReadDropListing(std::string_view line) {
    PopDropListing listing;
    listing.count = TakeNumber(line);
    listing.totalSize = TakeNumber(line);
    return listing;
}

} // namespace ZelNet
