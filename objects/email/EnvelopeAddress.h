#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tervane {

// The address of the envelope in what a From or To header says: what stands between angle brackets,
// outside of quotes, or else all of it; without blanks around. Nothing when it has a line break,
// which would let it add commands of its own.
std::optional<std::string> EnvelopeAddress(std::wstring_view header);

} // namespace tervane
