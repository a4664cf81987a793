#include "objects/dialup/DialWindow.h"

#include <ras.h>

namespace tervane {
namespace {

UINT ProgressMessage() noexcept {
    const UINT registered = RegisterWindowMessageA(RASDIALEVENT);
    return registered ? registered : WM_RASDIALEVENT;
}

// Of a class of the system's own: one of ours would have to go before the library does. All is done
// by the narrow functions, because no text is involved and the 9x family has no others.
HWND MakeWindow(HWND parent) noexcept {
    return CreateWindowExA(0, "STATIC", nullptr, 0, 0, 0, 0, 0, parent, nullptr, nullptr, nullptr);
}

// For messages only: whoever broadcasts to all windows need not wait for a thread that dials. The
// systems before Windows 2000 have no such windows.
HWND MakeMessageWindow() noexcept {
    HWND window = MakeWindow(HWND_MESSAGE);
    return window ? window : MakeWindow(nullptr);
}

} // namespace

DialWindow::DialWindow() : progressMessage_(ProgressMessage()), window_(MakeMessageWindow()) {
    if (window_) {
        SetWindowLongPtrA(window_.Get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrA(window_.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage));
    }
}

LRESULT CALLBACK DialWindow::OnMessage(HWND window, UINT message, WPARAM state, LPARAM error) {
    if (message == WM_CLOSE) {
        return 0; // only its owner ends it: without it the end of the dialling is never heard of
    }
    auto* self = reinterpret_cast<DialWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (!self || message != self->progressMessage_) {
        return DefWindowProcA(window, message, state, error);
    }
    try {
        self->progress_.push_back({static_cast<DWORD>(state), static_cast<DWORD>(error)});
    } catch (...) {
        // It may have been the last one: the connection would be waited for in vain.
        self->lost_ = {static_cast<DWORD>(state), ERROR_NOT_ENOUGH_MEMORY};
    }
    return TRUE;
}

std::optional<DialWindow::Progress> DialWindow::Take() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageA(&message);
    }
    if (progress_.empty()) {
        return lost_;
    }
    const Progress oldest = progress_.front();
    progress_.pop_front();
    return oldest;
}

} // namespace tervane
