#include "ZelBase/log/Logger.h"

#include "ZelBase/log/LogText.h"
#include "ZelBase/log/ProcessLog.h"

#include <charconv>
#include <cstring>
#include <new>

namespace ZelBase {

// The logger that writes into the log ring of the process.
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

namespace {

static_assert(kLogTextSize == sizeof LogRecord::text);
// The form with only a function and a format has always had room for more than a record holds.
constexpr std::size_t kFunctionTextSize = 1024;

// Copies what fits, and fills up with NUL.
template <std::size_t Size>
void CopyField(char (&field)[Size], const char* text) noexcept {
    const std::size_t length = text ? strnlen(text, Size - 1) : 0;
    std::memcpy(field, text, length);
    std::memset(field + length, 0, Size - length);
}

// "0x" and hexadecimal digits.
template <std::size_t Size>
void WriteIdentifier(char (&field)[Size], DWORD identifier) noexcept {
    field[0] = '0';
    field[1] = 'x';
    std::to_chars(field + 2, field + Size - 1, identifier, 16);
}

} // namespace

void WIN32_Logger::Log(LogLevel level, std::uint32_t value, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function_, level, value, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(LogLevel level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function_, level, value_, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(std::uint32_t value, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function_, level_, value, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function_, level_, value_, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted<kFunctionTextSize>(function, level_, value_, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(const char* function, LogLevel level, std::uint32_t value,
                       const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function, level, value, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(const char* function, LogLevel level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function, level, value_, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::Log(const char* function, std::uint32_t value, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(function, level_, value, format, arguments);
    va_end(arguments);
}

void WIN32_Logger::SetComponent(const char* name) {
    CopyField(component_, name);
}

void WIN32_Logger::SetFunction(const char* name) {
    CopyField(function_, name);
}

void WIN32_Logger::SetLevel(LogLevel level) {
    level_ = level;
}

void WIN32_Logger::SetValue(std::uint32_t value) {
    value_ = value;
}

bool WIN32_Logger::IsValid() const {
    return log_.IsValid();
}

template <std::size_t TextSize>
void WIN32_Logger::WriteFormatted(const char* function, LogLevel level, std::uint32_t value,
                                  const char* format, va_list arguments) noexcept {
    char text[TextSize];
    FormatLogText(text, format, arguments);
    WriteRecord(function, level, value, text);
}

void WIN32_Logger::WriteRecord(const char* function, LogLevel level, std::uint32_t value,
                               const char* text) noexcept {
    // Callers log a failure before they look at its code.
    const DWORD lastError = GetLastError();
    LogRecord record = {};
    CopyField(record.component, component_);
    CopyField(record.function, function);
    record.value = value;
    record.level = static_cast<std::uint8_t>(level);
    WriteIdentifier(record.process, GetCurrentProcessId());
    WriteIdentifier(record.thread, GetCurrentThreadId());
    CopyField(record.text, text);
    log_.Write(record);
    SetLastError(lastError);
}

std::unique_ptr<Logger> Logger::Create() {
    return std::unique_ptr<Logger>(new (std::nothrow) WIN32_Logger);
}

} // namespace ZelBase
