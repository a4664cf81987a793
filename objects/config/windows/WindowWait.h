#pragma once

// One wait for a window: to come, to go, or to come and go.
//
// A wait goes on in passes, each a look or two at the windows with pauses in between. The time-out
// of a wait counts passes, not milliseconds: deliberate, scripts have chosen their numbers by it.

#include "objects/config/windows/WaitTable.h"
#include "objects/config/windows/WindowFinder.h"

#include <optional>
#include <string>

#include <windows.h>

namespace tervane {

class WindowWait {
public:
    enum class Kind { kGone, kPresent, kComeAndGo };
    struct Request {
        Kind kind;
        std::wstring topLevelPattern;
        std::wstring childPattern;
        // Milliseconds; 0 or less means the finder's default.
        LONG checkInterval;
        bool includeInvisible;
        // Number of passes beyond the first; less than 1 means no time-out.
        LONG timeout;
        // With kComeAndGo: once the window has come, there is no time-out for its going.
        bool timeoutForAppearanceOnly;
    };

    explicit WindowWait(const Request& request);

    // Waits until the condition is met or the time-out runs out; nullopt, and at once, when
    // `abort` (an event) is signalled. Throws std::bad_alloc.
    std::optional<WaitResult> Run(HANDLE abort);

private:
    static constexpr LONGLONG kUncounted = -1;

    bool Test(HANDLE abort);
    bool TestComeAndGo(HANDLE abort);

    WindowFinder finder_;
    Kind kind_;
    bool timeoutForAppearanceOnly_;
    LONGLONG lastPass_;
    LONGLONG pass_;
    bool hasCome_ = false;
};

} // namespace tervane
