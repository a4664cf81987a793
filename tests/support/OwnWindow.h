#pragma once

// A window of this process on a thread of its own, which pumps messages only when told to.

#include "support/TestThreads.h"

#include <atomic>
#include <string>

#include <windows.h>

namespace tervane::test {

class OwnWindow {
public:
    enum class Thread { kPumps, kHangs };

    // The window is there, visible, with `children` buttons "Child 1"..., when this returns.
    OwnWindow(const std::wstring& title, Thread thread, int children = 0);
    ~OwnWindow();
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;

    HWND Handle() const { return window_; }

private:
    void Run(const std::wstring& title, Thread thread, int children);

    std::atomic<HWND> window_ = nullptr;
    HANDLE ready_;
    HANDLE end_;
    TestThread thread_;
};

} // namespace tervane::test
