#pragma once

// Windows to find: of a second process, and of this one on threads of their own.

#include "ZelBase/Handles.h"
#include "support/ChildProcess.h"
#include "support/TestThreads.h"

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace tervane::test {

// window_program, started with the options that it describes in tests/window_program/Main.cpp and
// read line by line.
class WindowProgram : public ChildProcess {
public:
    // Starts the program; `Expect("ready")` waits for its windows.
    explicit WindowProgram(const std::vector<std::wstring>& options)
        : ChildProcess(Program(L"window_program.exe", Quoted(options))) {}

    // Waits until the program writes this line, and skips those before it. False when nothing comes
    // for ten seconds.
    bool Expect(std::string_view line) {
        while (const auto next = ReadLine(10000)) {
            if (*next == line) {
                return true;
            }
        }
        return false;
    }

private:
    static std::wstring Quoted(const std::vector<std::wstring>& options) {
        std::wstring text;
        for (const std::wstring& option : options) {
            text.append(L" \"").append(option).append(L"\"");
        }
        return text;
    }
};

// A title that no other window has.
inline std::wstring UniqueTitle(std::wstring_view stem) {
    static std::atomic<int> number = 0;
    return std::wstring(stem) + L" " + std::to_wstring(GetCurrentProcessId()) + L" " +
           std::to_wstring(++number);
}

// On a thread which pumps messages only when told to.
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
