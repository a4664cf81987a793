#pragma once

#include "ZelBase/log/Logger.h"

namespace ZelNet {

// A logger whose records carry `component`; null when there is no memory.
inline std::unique_ptr<ZelBase::Logger> CreateLogger(const char* component) {
    auto logger = ZelBase::Logger::Create();
    if (logger) {
        logger->SetComponent(component);
    }
    return logger;
}

// Handles and objects appear in log texts as plain numbers of 32 bits, which is enough to tell them
// apart there.
template <typename Value>
unsigned long LogNumber(Value value) {
    return static_cast<unsigned long>((std::uintptr_t)value);
}

} // namespace ZelNet
