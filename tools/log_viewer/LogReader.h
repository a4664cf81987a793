#pragma once

// Reads the log ring from outside. Writers never wait for a reader: one that is too slow misses
// records, and is told how many.

#include "ZelBase/log/LogRing.h"
#include "tools/log_viewer/RingCursor.h"

#include <atomic>

class LogReader {
public:
    // Starts at the ring's present end: later records are new. The ring is valid and must outlive
    // the reader.
    explicit LogReader(const ZelBase::LogRing& ring) : ring_(ring), cursor_(ring.Section()) {}

    // What the ring holds; the next wait goes on from there. False when it stays locked.
    bool ReadAll(LogBatch& batch);
    // Waits for new records; `batch` stays empty when the reader was stopped. False when the ring
    // stays locked; the caller may go on trying.
    bool WaitForNew(LogBatch& batch);

    // Ends all waiting, now and later, within a second. Any thread.
    void Stop();
    bool IsStopped() const { return stopped_; }

private:
    bool Lock() const;
    void WaitForPulse() const;

    const ZelBase::LogRing& ring_;
    RingCursor cursor_;
    std::atomic<bool> stopped_ = false;
};
