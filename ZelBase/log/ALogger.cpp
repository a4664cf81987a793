#include "ZelBase/log/ALogger.h"

#include "ZelBase/log/LogText.h"

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

namespace ZelBase {
namespace {

// A text from outside, used as a format, may ask for arguments that nobody gave. There is one for
// every character it can have, so that the formatting never leaves them: each is an empty text to
// read, and room enough for whatever a directive might write.
template <std::size_t... Index>
void LogAsFormat(Logger& logger, const char* function, LogLevel level, const char* format,
                 std::index_sequence<Index...>) {
    char nothing[16] = {};
    logger.Log(function, level, format, (static_cast<void>(Index), nothing)...);
}

} // namespace

void ALogger::Log(const char* function, LogLevel level, const char* format, ...) {
    if (!logger_) {
        return;
    }
    char text[kLogTextSize];
    va_list arguments;
    va_start(arguments, format);
    FormatLogText(text, format, arguments);
    va_end(arguments);
    if (std::strchr(text, '%')) {
        LogAsFormat(*logger_, function, level, text, std::make_index_sequence<kLogTextSize>());
    } else {
        logger_->Log(function, level, "%s", text);
    }
}

namespace {

std::unique_ptr<Logger> MakeDebugLogger() {
    std::unique_ptr<Logger> logger = Logger::Create();
    if (logger) {
        logger->SetComponent("DEBUG");
        logger->SetFunction("DEBUG");
    }
    return logger;
}

// The library's logger, from its first use until the module goes. It is made without a lock: while
// one thread waits for the ring, others shall not have to wait for that thread.
class LibraryLogger {
public:
    constexpr LibraryLogger() noexcept = default;
    ~LibraryLogger() { delete logger_.exchange(nullptr); }

    // Null when there is no memory.
    ADefaultLogger* Get() {
        ADefaultLogger* logger = logger_;
        if (!logger) {
            std::unique_ptr<ADefaultLogger> made(new (std::nothrow) ADefaultLogger);
            if (logger_.compare_exchange_strong(logger, made.get())) {
                logger = made.release();
            } // else another thread was faster
        }
        return logger;
    }

private:
    std::atomic<ADefaultLogger*> logger_ = nullptr;
};

constinit LibraryLogger libraryLogger;

} // namespace

ADefaultLogger::ADefaultLogger() : ALogger(MakeDebugLogger()) {}

void Log(const char* function, LogLevel level, const char* format, ...) {
    ADefaultLogger* const logger = libraryLogger.Get();
    if (!logger) {
        return;
    }
    char text[kLogTextSize];
    va_list arguments;
    va_start(arguments, format);
    FormatLogText(text, format, arguments);
    va_end(arguments);
    logger->Log(function, level, "%s", text);
}

} // namespace ZelBase
