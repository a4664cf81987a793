#pragma once

// Every object traces what it does through a logger, into a ring of records that all processes of
// the machine share and that a viewer may watch live. A record carries the component, the function,
// a level, a 32-bit value and a text; the overloads of Log differ in which of function, level and
// value the caller names and which come from the logger's defaults.
//
// The most used form is Log(function, level, format, ...). Beware of giving a text as the first
// argument after a lone format: Log("%s", "a") has `"%s"` as its function and `"a"` as its format.

#include "ZelBase/log/LogText.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ZelBase {

// How much a log record matters. The level is a byte in the record; viewers show and filter by its
// number, and a component may use other numbers than the named ones.
enum class LogLevel : unsigned char {
    kError = 0,
    // A request refused, or something that is odd but handled.
    kWarning = 1,
    // What an object does, step by step.
    kTrace = 3,
};

} // namespace ZelBase

// The places of the format and of its first argument, counting from 1 with the object itself as 1.
#define ZELBASE_PRINTF(formatIndex, firstIndex)                                                    \
    __attribute__((format(printf, formatIndex, firstIndex)))

namespace ZelBase {

// The texts of records that one thread writes one after another, with nothing called between them.
// They are formatted when they are added, cut to what a record holds.
class LogTexts {
public:
    static constexpr std::size_t kMost = 6;

    // At most kMost; more are dropped.
    void Add(const char* format, ...) ZELBASE_PRINTF(2, 3);
    void Clear() noexcept { count_ = 0; }
    std::size_t Count() const noexcept { return count_; }
    const char* operator[](std::size_t index) const noexcept { return texts_[index]; }

private:
    std::size_t count_ = 0;
    char texts_[kMost][kLogTextSize];
};

// Log may be called from any thread at once; the Set functions only before that. A record's text
// holds 511 characters, longer ones are cut; function and component hold 63. Logging never fails
// towards the caller and leaves the thread's last error code as it was.
class Logger {
public:
    // The logger of this platform; null when there is no memory. It may be invalid: it then drops
    // all records.
    static std::unique_ptr<Logger> Create();

    virtual ~Logger() = default;
    virtual void Log(LogLevel level, std::uint32_t value, const char* format, ...)
        ZELBASE_PRINTF(4, 5) = 0;
    virtual void Log(LogLevel level, const char* format, ...) ZELBASE_PRINTF(3, 4) = 0;
    virtual void Log(std::uint32_t value, const char* format, ...) ZELBASE_PRINTF(3, 4) = 0;
    virtual void Log(const char* format, ...) ZELBASE_PRINTF(2, 3) = 0;
    virtual void Log(const char* function, const char* format, ...) ZELBASE_PRINTF(3, 4) = 0;
    virtual void Log(const char* function, LogLevel level, std::uint32_t value, const char* format,
                     ...) ZELBASE_PRINTF(5, 6) = 0;
    virtual void Log(const char* function, LogLevel level, const char* format, ...)
        ZELBASE_PRINTF(4, 5) = 0;
    virtual void Log(const char* function, std::uint32_t value, const char* format, ...)
        ZELBASE_PRINTF(4, 5) = 0;
    // The component that the records come from, initially "GENERAL".
    virtual void SetComponent(const char* name) = 0;
    // What records carry that do not say otherwise; initially "GENERAL", 0 and 0.
    virtual void SetFunction(const char* name) = 0;
    virtual void SetLevel(LogLevel level) = 0;
    virtual void SetValue(std::uint32_t value) = 0;
    // Whether records reach the ring.
    virtual bool IsValid() const = 0;
    // Writes one record for each text, at once: under one lock of the ring and with one pulse of
    // its event, which is what a record costs. A viewer cannot tell: the records are the same, in
    // the same order, the counter goes up by one for each, and a viewer that was woken for one has
    // always read all that have come.
    virtual void Log(const char* function, LogLevel level, const LogTexts& texts) = 0;

protected:
    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
};

} // namespace ZelBase
