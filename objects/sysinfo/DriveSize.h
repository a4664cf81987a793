#pragma once

// Sizes of drives in the units that scripts are told them in.

#include <cstdint>

namespace tervane {

// A number of bytes, as the system gives it in two halves.
struct ByteCount {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
};

// The numbers are the bytes in one unit.
enum class SizeUnit : std::uint32_t {
    kBytes = 1,
    kKilobytes = 1024,
    kMegabytes = 1048576,
    kGigabytes = 1073741824,
};

// Deliberately an approximation: each 4 GB of the high half count as one unit too few (4095 MB, not
// 4096), and what exceeds 4 GB - 1 in bytes is 4 GB - 1. Support staff compare these figures with
// those in their records, which were made this way.
constexpr std::uint64_t InUnit(ByteCount bytes, SizeUnit unit) noexcept {
    constexpr std::uint32_t kMost = 4294967295;
    if (unit == SizeUnit::kBytes) {
        return bytes.high != 0 ? kMost : bytes.low;
    }
    const auto divisor = static_cast<std::uint32_t>(unit);
    return bytes.low / divisor + std::uint64_t{bytes.high} * (kMost / divisor);
}

} // namespace tervane
