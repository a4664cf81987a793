#include "ZelBase/text/Base64.h"

#include <algorithm>
#include <cstdint>

namespace ZelBase {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string Base64Encode(std::string_view data) {
    std::string out(Base64Size(data.size()), '\0');
    Base64Encode(data, out.data());
    return out;
}

std::size_t Base64Encode(std::string_view data, char* out) noexcept {
    const char* const start = out;
    while (!data.empty()) {
        // Three bytes make four characters of six bits; missing bytes count as zero, and the
        // characters that come from them alone are written as padding.
        const std::size_t count = std::min<std::size_t>(data.size(), 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = (bits << 8) | (i < count ? static_cast<unsigned char>(data[i]) : 0u);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            *out++ = i <= count ? kAlphabet[(bits >> (18 - 6 * i)) & 0x3F] : '=';
        }
        data.remove_prefix(count);
    }
    return static_cast<std::size_t>(out - start);
}

} // namespace ZelBase
