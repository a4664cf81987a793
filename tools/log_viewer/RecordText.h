#pragma once

// Records as text, one line each, without line end.

#include "ZelBase/log/LogLayout.h"

#include <string>
#include <string_view>

// Time, process, thread, component, function, level, value and text, with a tab between them.
// Characters that would tear the line or drive the terminal, and backslashes, are written as
// escapes. `time` is the record's time as the user reads it.
std::string RecordLine(const ZelBase::LogRecord& record, const std::string& time);

// A JSON object of the same, in ASCII, with the seconds since 1970 beside `time`. `decode` turns
// the record's bytes into UTF-16.
std::string RecordJson(const ZelBase::LogRecord& record, const std::string& time,
                       std::wstring (*decode)(std::string_view));
