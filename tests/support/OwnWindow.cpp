#include "support/OwnWindow.h"

namespace tervane::test {

OwnWindow::OwnWindow(const std::wstring& title, Thread thread, int children)
    : ready_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      end_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    thread_ = TestThread([=, this] { Run(title, thread, children); });
    WaitForSingleObject(ready_, INFINITE);
}

OwnWindow::~OwnWindow() {
    SetEvent(end_);
    thread_.join();
    CloseHandle(ready_);
    CloseHandle(end_);
}

void OwnWindow::Run(const std::wstring& title, Thread thread, int children) {
    // Without a caption, so that no window manager needs to agree when it goes.
    HWND window = CreateWindowExW(0, L"STATIC", title.c_str(), WS_POPUP, 0, 0, 200, 200, nullptr,
                                  nullptr, nullptr, nullptr);
    for (int i = 1; i <= children; ++i) {
        CreateWindowExW(0, L"BUTTON", (L"Child " + std::to_wstring(i)).c_str(),
                        WS_CHILD | WS_VISIBLE, 0, 0, 50, 20, window, nullptr, nullptr, nullptr);
    }
    ShowWindow(window, SW_SHOWNOACTIVATE);
    window_ = window;
    SetEvent(ready_);
    if (thread == Thread::kHangs) {
        WaitForSingleObject(end_, INFINITE);
    }
    MSG message;
    while (MsgWaitForMultipleObjects(1, &end_, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }
    DestroyWindow(window);
}

} // namespace tervane::test
