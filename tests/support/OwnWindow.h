#pragma once

// A window of this process on a thread of its own, which pumps messages only when told to.

#include "ZelBase/Handles.h"
#include "support/TestThreads.h"

#include <string>

#include <windows.h>

namespace tervane::test {

class OwnWindow {
public:
    enum class Thread { kPumps, kHangs };

    // The window is there, visible, with `children` buttons "Child 1"..., when this returns.
    OwnWindow(const std::wstring& title, Thread thread, int children = 0) {
        thread_ = TestThread([=, this] { Run(title, thread, children); });
        WaitForSingleObject(ready_.Get(), INFINITE);
    }
    ~OwnWindow() { SetEvent(end_.Get()); }
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;

    HWND Handle() const { return window_; }

private:
    void Run(const std::wstring& title, Thread thread, int children) {
        // Without a caption, so that no window manager needs to agree when it goes.
        window_ = CreateWindowExW(0, L"STATIC", title.c_str(), WS_POPUP, 0, 0, 200, 200, nullptr,
                                  nullptr, nullptr, nullptr);
        for (int i = 1; i <= children; ++i) {
            CreateWindowExW(0, L"BUTTON", (L"Child " + std::to_wstring(i)).c_str(),
                            WS_CHILD | WS_VISIBLE, 0, 0, 50, 20, window_, nullptr, nullptr,
                            nullptr);
        }
        ShowWindow(window_, SW_SHOWNOACTIVATE);
        SetEvent(ready_.Get());
        HANDLE end = end_.Get();
        if (thread == Thread::kHangs) {
            WaitForSingleObject(end, INFINITE);
        }
        MSG message;
        while (MsgWaitForMultipleObjects(1, &end, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                DispatchMessageW(&message);
            }
        }
        DestroyWindow(window_);
    }

    HWND window_ = nullptr; // written before ready_ is set
    const ZelBase::UniqueHandle ready_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const ZelBase::UniqueHandle end_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    TestThread thread_; // joined before anything else goes
};

} // namespace tervane::test
