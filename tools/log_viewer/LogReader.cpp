#include "tools/log_viewer/LogReader.h"

namespace {

constexpr DWORD kLockTimeoutMs = 2000;
// Writers pulse the event, which wakes only those who wait at that moment. The reader starts to
// wait in the same call that unlocks the ring, which all but closes the gap; as the system does not
// promise that nothing happens in between, it also looks once in a while.
constexpr DWORD kLookMs = 1000;

} // namespace

bool LogReader::Lock() const {
    const DWORD result = WaitForSingleObject(ring_.Mutex(), kLockTimeoutMs);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

bool LogReader::ReadAll(LogBatch& batch) {
    batch = {};
    if (!Lock()) {
        return false;
    }
    batch = cursor_.TakeAll(ring_.Section());
    ReleaseMutex(ring_.Mutex());
    return true;
}

bool LogReader::WaitForNew(LogBatch& batch) {
    batch = {};
    while (!stopped_) {
        if (!Lock()) {
            return false;
        }
        batch = cursor_.TakeNew(ring_.Section());
        if (!batch.records.empty()) {
            ReleaseMutex(ring_.Mutex());
            return true;
        }
        WaitForPulse();
    }
    return true;
}

// Wakes other viewers as well, who find nothing new.
void LogReader::Stop() {
    stopped_ = true;
    PulseEvent(ring_.Event());
}

// Called with the ring locked; unlocks it.
void LogReader::WaitForPulse() const {
    if (SignalObjectAndWait(ring_.Mutex(), ring_.Event(), kLookMs, FALSE) == WAIT_FAILED) {
        ReleaseMutex(ring_.Mutex());
        Sleep(kLookMs);
    }
}
