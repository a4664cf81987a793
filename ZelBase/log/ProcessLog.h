#pragma once

// The one ring that all loggers of this process write into. The first logger opens it, the last one
// closes it.
//
// It is the ring that other processes see, unless that is refused or somebody keeps it locked; then
// it is one of this process alone, so that whoever needs a logger works all the same. A ring that
// was only locked is asked for again from time to time, with the next record.
//
// No lock is held while anything is waited for, and none is needed to write: a ring that has been
// put in place stays there until the last logger goes.

#include "ZelBase/log/LogRing.h"

namespace ZelBase {

// A logger's share in the ring. May be used by several threads at once.
class ProcessLog {
public:
    // Opens the ring if need be, which may take a second on a thread of our own; a thread of the
    // host, which may be a script's, waits for nothing.
    ProcessLog() noexcept;
    ~ProcessLog();
    ProcessLog(const ProcessLog&) = delete;
    ProcessLog& operator=(const ProcessLog&) = delete;

    // False when the system has not even room for a ring of this process.
    bool IsValid() const noexcept;
    // See LogRing::Write.
    void Write(const LogRecord& head, LogRing::Texts texts) noexcept;

private:
    const bool counted_;
};

} // namespace ZelBase
