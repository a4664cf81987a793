#pragma once

// A crowd of hidden top-level windows in a process of its own, as a finder meets them on a desktop.
// They go when their owner here goes, even if this process dies.

#include "ZelBase/Handles.h"

#include <optional>
#include <string>

namespace bench {

class ManyWindows {
public:
    // Starts the second process and waits until its windows exist; fails the program otherwise.
    explicit ManyWindows(int count);
    ~ManyWindows();
    ManyWindows(const ManyWindows&) = delete;
    ManyWindows& operator=(const ManyWindows&) = delete;

    // The title of the window that the system enumerates last.
    const std::wstring& LastTitle() const { return lastTitle_; }

    // The second process: if the command line asks for windows, shows them for as long as the
    // asking process lives and returns the exit status.
    static std::optional<int> RunIfAsked(int argumentCount, char** arguments);

private:
    ZelBase::UniqueHandle process_;
    std::wstring lastTitle_;
};

// The bare loop that everybody writes: reads the titles in the system's order until one contains
// `text`. Null if none does.
HWND FindByBareLoop(const std::wstring& text);

} // namespace bench
