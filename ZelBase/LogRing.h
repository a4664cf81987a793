#pragma once

// The machine-wide log ring: a named section with the records, a named mutex around it and a named
// event that is pulsed for each record. Whoever opens it first makes it; it lives as long as
// anyone holds it open. What lies in the section was written by other processes, some of which may
// have died half-way: nothing read from it is trusted further than that it is memory.

#include "ZelBase/Handles.h"
#include "ZelBase/LogLayout.h"

namespace ZelBase {

class LogRing {
public:
    // Opens the ring, or makes it. Waits without limit for a process that is just doing the same.
    LogRing() noexcept;
    LogRing(const LogRing&) = delete;
    LogRing& operator=(const LogRing&) = delete;

    bool IsValid() const noexcept;

    // Stamps `record` with the current time and puts it into the ring, waking the viewers. The
    // record is dropped (false) when the ring is invalid or stays locked for one second.
    bool Write(LogRecord& record) noexcept;

    // For viewers, of a valid ring. The mutex guards the section against writers; a writer that
    // died with it counts as one that gave it back.
    HANDLE Mutex() const noexcept { return mutex_.Get(); }
    HANDLE Event() const noexcept { return event_.Get(); }
    const LogSection& Section() const noexcept { return *static_cast<LogSection*>(view_.Get()); }

private:
    void OpenSection(const char* name, SECURITY_ATTRIBUTES* security) noexcept;

    UniqueHandle event_;
    UniqueHandle mutex_;
    UniqueHandle section_;
    UniqueMappedView view_;
};

} // namespace ZelBase
