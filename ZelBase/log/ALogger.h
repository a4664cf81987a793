#pragma once

// A logger that may be missing: what is logged to one that could not be made goes nowhere.
//
// The text is formatted here, and the result is in turn the format of the logger within, so that a
// "%" has to be written as "%%%%". This is deliberate: callers rely on the doubling.

#include "ZelBase/log/Logger.h"

namespace ZelBase {

class ALogger {
public:
    // Takes over `logger`, which may be null.
    explicit ALogger(std::unique_ptr<Logger> logger) noexcept : logger_(std::move(logger)) {}
    virtual ~ALogger() = default;
    ALogger(const ALogger&) = delete;
    ALogger& operator=(const ALogger&) = delete;

    bool IsValid() const { return logger_ && logger_->IsValid(); }
    void Log(const char* function, LogLevel level, const char* format, ...) ZELBASE_PRINTF(4, 5);

private:
    std::unique_ptr<Logger> logger_;
};

// The logger for code that has none of its own. Its component and function are "DEBUG".
class ADefaultLogger final : public ALogger {
public:
    ADefaultLogger();
};

// Logs through the one ADefaultLogger of the library, which is made on first use. A "%" in the
// formatted text is subject to the doubling of ALogger.
void Log(const char* function, LogLevel level, const char* format, ...) ZELBASE_PRINTF(3, 4);

} // namespace ZelBase
