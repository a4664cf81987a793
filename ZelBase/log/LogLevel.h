#pragma once

// How much a log record matters. The level is a byte in the record; viewers show and filter by its
// number, and a component may use other numbers than the named ones.

namespace ZelBase {

enum class LogLevel : unsigned char {
    kError = 0,
    // A request refused, or something that is odd but handled.
    kWarning = 1,
    // What an object does, step by step.
    kTrace = 3,
};

} // namespace ZelBase
