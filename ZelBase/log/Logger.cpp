#include "ZelBase/log/Logger.h"

#include "ZelBase/log/WIN32_Logger.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Logger> Logger::Create() {
    return std::unique_ptr<Logger>(new (std::nothrow) WIN32_Logger);
}

} // namespace ZelBase
