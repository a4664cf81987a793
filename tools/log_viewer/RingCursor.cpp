#include "tools/log_viewer/RingCursor.h"

#include <algorithm>

using ZelBase::kLogSlotCount;
using ZelBase::LogRecord;
using ZelBase::LogSection;

namespace {

// A counter that has advanced by more than this has been set back by whoever damaged it.
constexpr std::uint32_t kHighestAdvance = 0x7FFFFFFF;

// Each number of the header is read once, because it may change between its check and its use.
std::uint32_t Written(const volatile LogSection& section) {
    return section.written;
}

std::uint32_t NextSlot(const volatile LogSection& section) {
    const std::uint32_t next = section.nextSlot;
    return next < kLogSlotCount ? next : 0; // as the writers take it, who go on at the front
}

std::vector<LogRecord> Newest(const LogSection& section, std::uint32_t count) {
    const std::uint32_t first = NextSlot(section) + kLogSlotCount - count;
    std::vector<LogRecord> records;
    records.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        records.push_back(section.records[(first + i) % kLogSlotCount]);
    }
    return records;
}

} // namespace

RingCursor::RingCursor(const LogSection& section) : seen_(Written(section)) {}

LogBatch RingCursor::TakeAll(const LogSection& section) {
    seen_ = Written(section);
    LogBatch batch{0, Newest(section, kLogSlotCount)};
    // A slot that nobody has written to yet names no process.
    std::erase_if(batch.records, [](const LogRecord& record) { return record.process[0] == 0; });
    return batch;
}

LogBatch RingCursor::TakeNew(const LogSection& section) {
    const std::uint32_t written = Written(section);
    const std::uint32_t count = written - seen_; // right across the wrap, too
    seen_ = written;
    if (count == 0 || count > kHighestAdvance) {
        return {};
    }
    const std::uint32_t kept = std::min(count, kLogSlotCount);
    return {count - kept, Newest(section, kept)};
}
