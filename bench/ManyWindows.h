#pragma once

// A crowd of hidden top-level windows in a process of its own, as a finder meets them on a desktop.
// They go when their owner here goes, even if this process dies.

#include "ZelBase/Handles.h"

#include <optional>
#include <string>

namespace bench {

struct Crowd {
    int windows;
    // Below each of them; with titles, too.
    int children = 0;
    bool haveTitles = true;
};

class ManyWindows {
public:
    // Starts the second process and waits until its windows exist; fails the program otherwise.
    explicit ManyWindows(const Crowd& crowd);
    ~ManyWindows();
    ManyWindows(const ManyWindows&) = delete;
    ManyWindows& operator=(const ManyWindows&) = delete;

    // The title of the window that the system enumerates last, and of its last child.
    const std::wstring& LastTitle() const { return lastTitle_; }
    std::wstring LastChildTitle() const;

    // The second process: if the command line asks for windows, shows them for as long as the
    // asking process lives and returns the exit status.
    static std::optional<int> RunIfAsked(int argumentCount, char** arguments);

private:
    Crowd crowd_;
    ZelBase::UniqueHandle process_;
    std::wstring lastTitle_;
};

// The bare loops that everybody writes: read the titles in the system's order until one contains
// `text`, of top-level windows, or of windows below them, too. Null if none does.
HWND FindByBareLoop(const std::wstring& text);
HWND FindBelowByBareLoop(const std::wstring& text);

} // namespace bench
