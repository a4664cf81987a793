#include "objects/email/EnvelopeAddress.h"

#include "ZelBase/text/TextConversion.h"

#include <algorithm>

namespace tervane {
namespace {

// Where the first "<" is that no quoted display name contains (RFC 5322, section 3.2.4).
std::size_t FindBracket(std::wstring_view header) {
    bool quoted = false;
    for (std::size_t i = 0; i < header.size(); ++i) {
        if (header[i] == L'"') {
            quoted = !quoted;
        } else if (header[i] == L'\\' && quoted) {
            ++i;
        } else if (header[i] == L'<' && !quoted) {
            return i;
        }
    }
    return std::wstring_view::npos;
}

} // namespace

std::string EnvelopeAddress(std::wstring_view header) {
    const std::size_t open = FindBracket(header);
    const std::size_t close = open == header.npos ? header.npos : header.find(L'>', open);
    if (close != header.npos) {
        header = header.substr(open + 1, close - open - 1);
    }
    std::string address = ZelBase::Utf16ToBytes(Trimmed(header, L" \t"));
    // A zero character would cut it short on its way, and what is left might be somebody's address.
    std::replace(address.begin(), address.end(), '\0', ' ');
    return address;
}

} // namespace tervane
