#include "ZelBase/log/ALogger.h"

#include "ZelBase/log/LogText.h"

#include <cstring>
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

} // namespace ZelBase
