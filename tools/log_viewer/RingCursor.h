#pragma once

// A place in the log ring up to which a reader knows it. The section is memory that any process may
// write to, even while it is read, so whatever it says is checked; nothing is read outside of it.

#include "ZelBase/log/LogLayout.h"

#include <cstdint>
#include <vector>

struct LogBatch {
    // Records that were overwritten before they could be read; they come before those below.
    std::uint32_t missed = 0;
    std::vector<ZelBase::LogRecord> records; // oldest first
};

class RingCursor {
public:
    // At the ring's present end: later records are new.
    explicit RingCursor(const ZelBase::LogSection& section);

    // What the ring holds; the cursor then stands at its end.
    LogBatch TakeAll(const ZelBase::LogSection& section);
    // What came since the cursor's place, which moves to the end. Empty when nothing did, and when
    // the counter was damaged: then nothing can be said about what was missed.
    LogBatch TakeNew(const ZelBase::LogSection& section);

private:
    std::uint32_t seen_; // the ring's counter when it was read last
};
