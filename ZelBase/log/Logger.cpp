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
    void Log(const char* function, LogLevel level, const LogTexts& texts) override;

private:
    template <std::size_t TextSize = kLogTextSize>
    void WriteFormatted(const char* function, LogLevel level, std::uint32_t value,
                        const char* format, va_list arguments) noexcept;
    void WriteRecords(const char* function, LogLevel level, std::uint32_t value,
                      LogRing::Texts texts) noexcept;

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

// "0x" and hexadecimal digits, filled up with NUL.
template <std::size_t Size>
void WriteIdentifier(char (&field)[Size], DWORD identifier) noexcept {
    field[0] = '0';
    field[1] = 'x';
    char* const end = std::to_chars(field + 2, field + Size, identifier, 16).ptr;
    std::memset(end, 0, static_cast<std::size_t>(field + Size - end));
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

void WIN32_Logger::Log(const char* function, LogLevel level, const LogTexts& texts) {
    if (texts.Count() == 0) {
        return;
    }
    std::string_view views[LogTexts::kMost];
    for (std::size_t index = 0; index < texts.Count(); ++index) {
        views[index] = texts[index];
    }
    WriteRecords(function, level, value_, {views, texts.Count()});
}

template <std::size_t TextSize>
void WIN32_Logger::WriteFormatted(const char* function, LogLevel level, std::uint32_t value,
                                  const char* format, va_list arguments) noexcept {
    char text[TextSize];
    FormatLogText(text, format, arguments);
    const std::string_view view(text, strnlen(text, kLogTextSize - 1));
    WriteRecords(function, level, value, {&view, 1});
}

void WIN32_Logger::WriteRecords(const char* function, LogLevel level, std::uint32_t value,
                                LogRing::Texts texts) noexcept {
    // Callers log a failure before they look at its code.
    const DWORD lastError = GetLastError();
    LogRecord head; // its text is of no use
    std::memcpy(head.component, component_, sizeof component_);
    CopyField(head.function, function);
    head.time = 0;
    head.value = value;
    head.level = static_cast<std::uint8_t>(level);
    WriteIdentifier(head.process, GetCurrentProcessId());
    WriteIdentifier(head.thread, GetCurrentThreadId());
    log_.Write(head, texts);
    SetLastError(lastError);
}

void LogTexts::Add(const char* format, ...) {
    if (count_ == kMost) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    FormatLogText(texts_[count_++], format, arguments);
    va_end(arguments);
}

std::unique_ptr<Logger> Logger::Create() {
    return std::unique_ptr<Logger>(new (std::nothrow) WIN32_Logger);
}

} // namespace ZelBase
