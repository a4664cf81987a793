#include "objects/config/DialWindow.h"

#include <ras.h>

namespace tervane {
namespace {

UINT ProgressMessage() noexcept {
    const UINT registered = RegisterWindowMessageA(RASDIALEVENT);
    return registered ? registered : WM_RASDIALEVENT;
}

} // namespace

DialWindow::DialWindow()
    : progressMessage_(ProgressMessage()),
      // A class of the system's own: one of ours would have to go before the library does.
      window_(CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                              nullptr)) {
    if (window_) {
        SetWindowLongPtrW(window_.Get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(window_.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage));
    }
}

LRESULT CALLBACK DialWindow::OnMessage(HWND window, UINT message, WPARAM state, LPARAM error) {
    auto* self = reinterpret_cast<DialWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || message != self->progressMessage_) {
        return DefWindowProcW(window, message, state, error);
    }
    try {
        self->progress_.push_back({static_cast<DWORD>(state), static_cast<DWORD>(error)});
    } catch (...) {
        // Out of memory; a later state may still get through.
    }
    return TRUE;
}

std::optional<DialWindow::Progress> DialWindow::Take() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
    if (progress_.empty()) {
        return std::nullopt;
    }
    const Progress oldest = progress_.front();
    progress_.pop_front();
    return oldest;
}

} // namespace tervane
