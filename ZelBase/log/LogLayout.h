#pragma once

// The shared section of the log as it lies in memory: a header and a ring of fixed-size records.
// Viewers of other make read the same bytes, so nothing here may move. All integers are
// little-endian.

#include <cstddef>
#include <cstdint>

namespace ZelBase {

#pragma pack(push, 1)

// Texts end with NUL and are filled up with NUL.
struct LogRecord {
    char component[64];
    char function[64];
    std::uint32_t time; // seconds since 1970
    std::uint32_t value;
    std::uint8_t level;
    char process[32]; // identifiers as text, such as "0x1a4"
    char thread[32];
    char text[512];
    char reserved[3];
};

// There is room for one record more than the ring uses. This is deliberate: viewers count on a
// section of this size with this number of slots.
inline constexpr std::uint32_t kLogSlotCount = 199;

struct LogSection {
    std::uint32_t totalSize; // of the section
    std::uint32_t nextSlot;  // where the next record goes
    std::uint32_t written;   // records ever written, wrapping at 2^32
    std::uint32_t slotCount;
    LogRecord records[kLogSlotCount + 1];
};

#pragma pack(pop)

static_assert(sizeof(LogRecord) == 716);
static_assert(offsetof(LogRecord, function) == 64 && offsetof(LogRecord, time) == 128);
static_assert(offsetof(LogRecord, value) == 132 && offsetof(LogRecord, level) == 136);
static_assert(offsetof(LogRecord, process) == 137 && offsetof(LogRecord, thread) == 169);
static_assert(offsetof(LogRecord, text) == 201 && offsetof(LogRecord, reserved) == 713);
static_assert(offsetof(LogSection, records) == 16 && sizeof(LogSection) == 143216);

} // namespace ZelBase
