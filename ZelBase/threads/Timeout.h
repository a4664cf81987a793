#pragma once

#include <cstdint>

namespace ZelBase {

// Time-outs are milliseconds; this one means to wait without limit.
inline constexpr std::uint32_t kInfinite = 0xFFFFFFFF;

} // namespace ZelBase
