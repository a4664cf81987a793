#pragma once

// The window to which dial-up networking sends the progress of one connection. A window, and not a
// callback function: it belongs to one connection by itself, every Windows can use it, and nothing
// is called any more when it is gone, whatever the system still has to say.
//
// The system may send from a thread of its own, which waits meanwhile; so what arrives is only
// noted, to be taken out by the thread that owns the window.

#include "ZelBase/UniqueResource.h"

#include <windows.h>

#include <deque>
#include <optional>

namespace tervane {

struct WindowTraits {
    using Type = HWND;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type window) noexcept { DestroyWindow(window); }
};
using UniqueWindow = ZelBase::UniqueResource<WindowTraits>;

class DialWindow {
public:
    // All members are for the thread that makes the object.
    DialWindow();
    DialWindow(const DialWindow&) = delete;
    DialWindow& operator=(const DialWindow&) = delete;

    // Null when no window could be made.
    HWND Handle() const noexcept { return window_.Get(); }

    struct Progress {
        DWORD state;
        DWORD error;
    };
    // Lets waiting messages in, and takes out the oldest progress. One that could not be noted is
    // an error, ERROR_NOT_ENOUGH_MEMORY.
    std::optional<Progress> Take();

private:
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM state, LPARAM error);

    const UINT progressMessage_;
    std::deque<Progress> progress_;
    std::optional<Progress> lost_;
    UniqueWindow window_;
};

} // namespace tervane
