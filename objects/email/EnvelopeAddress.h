#pragma once

#include <string>
#include <string_view>

namespace tervane {

// The address of the envelope in what a From or To header says: what stands between angle brackets,
// outside of quotes, or else all of it; without blanks around, and with a blank for each zero
// character. It may be anything else than an address: the client that sends it looks at the bytes.
std::string EnvelopeAddress(std::wstring_view header);

} // namespace tervane
