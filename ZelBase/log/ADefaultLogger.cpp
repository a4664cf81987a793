#include "ZelBase/log/ADefaultLogger.h"

#include "ZelBase/log/LogText.h"

#include <atomic>
#include <new>

namespace ZelBase {
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
