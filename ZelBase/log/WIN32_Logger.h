#pragma once

// The logger that writes into the log ring of the process.

#include "ZelBase/log/LogText.h"
#include "ZelBase/log/Logger.h"
#include "ZelBase/log/ProcessLog.h"

namespace ZelBase {

class WIN32_Logger final : public Logger {
public:
    void Log(LogLevel level, std::uint32_t value, const char* format, ...) override
        ZELBASE_PRINTF(4, 5);
    void Log(LogLevel level, const char* format, ...) override ZELBASE_PRINTF(3, 4);
    void Log(std::uint32_t value, const char* format, ...) override ZELBASE_PRINTF(3, 4);
    void Log(const char* format, ...) override ZELBASE_PRINTF(2, 3);
    void Log(const char* function, const char* format, ...) override ZELBASE_PRINTF(3, 4);
    void Log(const char* function, LogLevel level, std::uint32_t value, const char* format,
             ...) override ZELBASE_PRINTF(5, 6);
    void Log(const char* function, LogLevel level, const char* format, ...) override
        ZELBASE_PRINTF(4, 5);
    void Log(const char* function, std::uint32_t value, const char* format, ...) override
        ZELBASE_PRINTF(4, 5);
    void SetComponent(const char* name) override;
    void SetFunction(const char* name) override;
    void SetLevel(LogLevel level) override;
    void SetValue(std::uint32_t value) override;
    bool IsValid() const override;

private:
    template <std::size_t TextSize = kLogTextSize>
    void WriteFormatted(const char* function, LogLevel level, std::uint32_t value,
                        const char* format, va_list arguments) noexcept;
    void WriteRecord(const char* function, LogLevel level, std::uint32_t value,
                     const char* text) noexcept;

    ProcessLog log_;
    char component_[sizeof LogRecord::component] = "GENERAL";
    char function_[sizeof LogRecord::function] = "GENERAL";
    std::uint32_t value_ = 0;
    LogLevel level_ = LogLevel::kError;
};

} // namespace ZelBase
