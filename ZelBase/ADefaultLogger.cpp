#include "ZelBase/ADefaultLogger.h"

#include "ZelBase/LogText.h"

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

} // namespace

ADefaultLogger::ADefaultLogger() : ALogger(MakeDebugLogger()) {}

void Log(const char* function, LogLevel level, const char* format, ...) {
    // Not a plain global: opening the ring waits for other processes, which no library may do while
    // it is being loaded.
    static ADefaultLogger logger;
    char text[kLogTextSize];
    va_list arguments;
    va_start(arguments, format);
    FormatLogText(text, format, arguments);
    va_end(arguments);
    logger.Log(function, level, "%s", text);
}

} // namespace ZelBase
