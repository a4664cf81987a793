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

} // namespace ZelBase
