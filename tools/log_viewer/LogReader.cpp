#include "tools/log_viewer/LogReader.h"

#include <algorithm>

using ZelBase::kLogSlotCount;
using ZelBase::LogRecord;
using ZelBase::LogSection;

namespace {

constexpr DWORD kLockTimeoutMs = 2000;
// Writers pulse the event, which wakes only those who wait at that moment. The reader starts to
// wait in the same call that unlocks the ring, which all but closes the gap; as the system does not
// promise that nothing happens in between, it also looks once in a while.
constexpr DWORD kLookMs = 1000;
// A counter that has advanced by more than this has been set back by whoever damaged it: nothing
// can be said about what was missed, and the reader goes on from there.
constexpr std::uint32_t kHighestAdvance = 0x7FFFFFFF;

} // namespace

LogReader::LogReader(const ZelBase::LogRing& ring) : ring_(ring), seen_(ring.Section().written) {}

bool LogReader::Lock() const {
    const DWORD result = WaitForSingleObject(ring_.Mutex(), kLockTimeoutMs);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

bool LogReader::ReadAll(LogBatch& batch) {
    batch = {};
    if (!Lock()) {
        return false;
    }
    seen_ = ring_.Section().written;
    CopyNewest(kLogSlotCount, batch.records);
    ReleaseMutex(ring_.Mutex());
    // A slot that nobody has written to yet names no process.
    std::erase_if(batch.records, [](const LogRecord& record) { return record.process[0] == 0; });
    return true;
}

bool LogReader::WaitForNew(LogBatch& batch) {
    batch = {};
    while (Lock()) {
        const std::uint32_t count = ring_.Section().written - seen_; // right across the wrap, too
        if (count > kHighestAdvance) {
            seen_ = ring_.Section().written;
        }
        if (count == 0 || count > kHighestAdvance) {
            WaitForPulse();
            continue;
        }
        const std::uint32_t kept = std::min(count, kLogSlotCount);
        CopyNewest(kept, batch.records);
        ReleaseMutex(ring_.Mutex());
        batch.missed = count - kept;
        seen_ += count;
        return true;
    }
    return false;
}

// Called with the ring locked; unlocks it.
void LogReader::WaitForPulse() const {
    if (SignalObjectAndWait(ring_.Mutex(), ring_.Event(), kLookMs, FALSE) == WAIT_FAILED) {
        ReleaseMutex(ring_.Mutex());
        Sleep(kLookMs);
    }
}

void LogReader::CopyNewest(std::uint32_t count, std::vector<LogRecord>& records) const {
    const LogSection& section = ring_.Section();
    // A damaged index is taken as the writers take it, who go on at the front.
    const std::uint32_t next = section.nextSlot < kLogSlotCount ? section.nextSlot : 0;
    records.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        records.push_back(section.records[(next + kLogSlotCount - count + i) % kLogSlotCount]);
    }
}
