#pragma once

// A log ring: a section with the records, a mutex around it and an event that is pulsed for
// records that have come. Whoever opens it first makes it; it lives as long as anyone holds it
// open. What lies in the section was written by other processes, some of which may have died
// half-way, and the objects themselves may have been made by anybody: nothing is trusted further
// than that it is memory.

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogLayout.h"

#include <atomic>
#include <memory>
#include <span>
#include <string_view>

namespace ZelBase {

class LogRing {
public:
    // Who shares the ring: all processes, those of this terminal session, or this process alone,
    // whose ring has no name.
    enum class Place { kMachine, kSession, kProcess };
    enum class Result {
        kOpened,
        kRefused, // an object cannot be had, or is not what it should be
        kLocked,  // somebody keeps the mutex
    };

    // Opens the ring of that place, or makes it; `ring` is set only by kOpened. Waits for the mutex
    // at most `patienceMs`.
    static Result Open(Place place, DWORD patienceMs, std::unique_ptr<LogRing>& ring) noexcept;
    // The same for the ring that others see: the machine's, or where that is refused the session's.
    static Result OpenShared(DWORD patienceMs, std::unique_ptr<LogRing>& ring) noexcept;

    LogRing(const LogRing&) = delete;
    LogRing& operator=(const LogRing&) = delete;

    // Of records that follow each other, none longer than a record holds.
    using Texts = std::span<const std::string_view>;

    // Puts one record for each text into the ring, with the current time and all else from `head`,
    // and wakes the viewers. The records are dropped (false) when the ring stays locked for
    // `patienceMs`. From then on records are dropped without any waiting, until one comes that
    // finds the ring unlocked. Any thread.
    bool Write(const LogRecord& head, Texts texts, DWORD patienceMs) noexcept;
    // Whether the last record was dropped.
    bool IsStuck() const noexcept { return stuck_; }

    Place GetPlace() const noexcept { return place_; }
    // Whether this opening has made the section.
    bool IsNew() const noexcept { return isNew_; }

    // For viewers. The mutex guards the section against writers; a writer that died with it counts
    // as one that gave it back.
    HANDLE Mutex() const noexcept { return mutex_.Get(); }
    HANDLE Event() const noexcept { return event_.Get(); }
    const LogSection& Section() const noexcept { return *static_cast<LogSection*>(view_.Get()); }

private:
    class NameSpace;

    explicit LogRing(Place place) noexcept : place_(place) {}
    Result OpenObjects(DWORD patienceMs) noexcept;
    bool OpenSection(NameSpace& names) noexcept;
    void Append(const LogRecord& head, std::string_view text, std::uint32_t time) noexcept;

    const Place place_;
    bool isNew_ = false;
    std::atomic<bool> stuck_ = false;
    UniqueHandle event_;
    UniqueHandle mutex_;
    UniqueHandle section_;
    UniqueMappedView view_;
};

} // namespace ZelBase
