#pragma once

// Turns records into lines on standard output, one line each, and leaves out what was not asked
// for.

#include "ZelBase/LogLayout.h"
#include "tools/log_viewer/LogReader.h"
#include "tools/log_viewer/Options.h"

#include <string>

// One line, without line end: time (local), process, thread, component, function, level, value and
// text, with a tab between them. Characters that would tear the line or drive the terminal, and
// backslashes, are written as escapes.
std::string RecordLine(const ZelBase::LogRecord& record);

class RecordPrinter {
public:
    explicit RecordPrinter(const Options& options) : options_(options) {}

    // Prints what is wanted of `batch`, and how many records were missed before it. False when as
    // many records have been shown as were asked for, or when nobody reads the output any more.
    bool Print(const LogBatch& batch);

private:
    bool IsWanted(const ZelBase::LogRecord& record) const;

    const Options& options_;
    std::uint32_t shown_ = 0;
};
