#pragma once

#include <string>
#include <string_view>

namespace ZelBase {

// RFC 4648, section 4: the standard alphabet, padded with "=", in one line however long.
std::string Base64Encode(std::string_view data);

} // namespace ZelBase
