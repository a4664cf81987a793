#pragma once

// Shows records, one line each, leaves out what was not asked for, and counts.

#include "tools/log_viewer/Options.h"
#include "tools/log_viewer/Output.h"
#include "tools/log_viewer/RingCursor.h"

class RecordPrinter {
public:
    // Both must outlive this object.
    RecordPrinter(const Options& options, Output& output) : options_(options), output_(output) {}

    // Shows what is wanted of `batch`, and how many records were missed before it. False when as
    // many records have been shown as were asked for, or when the output takes no more.
    bool Print(const LogBatch& batch);

    std::uint32_t Shown() const { return shown_; }
    // Of all records, wanted or not.
    std::uint64_t Missed() const { return missed_; }

private:
    void PrintMissed(std::uint32_t count);
    void PrintRecord(const ZelBase::LogRecord& record);

    const Options& options_;
    Output& output_;
    std::uint32_t shown_ = 0;
    std::uint64_t missed_ = 0;
};
