#pragma once

// Reads the log ring from outside. Writers never wait for a reader: one that is too slow misses
// records, and is told how many.

#include "ZelBase/LogRing.h"

#include <cstdint>
#include <vector>

struct LogBatch {
    // Records that were overwritten before they could be read; they come before those below.
    std::uint32_t missed = 0;
    std::vector<ZelBase::LogRecord> records; // oldest first
};

class LogReader {
public:
    // Starts at the ring's present end: later records are new. The ring is valid and must outlive
    // the reader.
    explicit LogReader(const ZelBase::LogRing& ring);

    // What the ring holds, oldest first. False when it stays locked.
    bool ReadAll(LogBatch& batch);
    // Waits for new records. False when the ring stays locked; the caller may go on trying.
    bool WaitForNew(LogBatch& batch);

private:
    bool Lock() const;
    void WaitForPulse() const;
    void CopyNewest(std::uint32_t count, std::vector<ZelBase::LogRecord>& records) const;

    const ZelBase::LogRing& ring_;
    std::uint32_t seen_; // the ring's counter when it was read last
};
