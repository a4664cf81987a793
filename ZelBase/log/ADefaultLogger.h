#pragma once

// The logger for code that has none of its own. Its component and function are "DEBUG".

#include "ZelBase/log/ALogger.h"

namespace ZelBase {

class ADefaultLogger final : public ALogger {
public:
    ADefaultLogger();
};

// Logs through the one ADefaultLogger of the library, which is made on first use. A "%" in the
// formatted text is subject to the doubling of ALogger.
void Log(const char* function, LogLevel level, const char* format, ...) ZELBASE_PRINTF(3, 4);

} // namespace ZelBase
