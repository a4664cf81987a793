#include "component/PostbackWindow.h"

#include "ZelBase/CriticalSection.h"

#include <cstdio>

namespace tervane {
namespace {

constexpr UINT kLastPostback = 0x7FFF;

ZelBase::CriticalSection classNames;

LRESULT CALLBACK PostbackProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message < WM_USER || message > kLastPostback) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    auto* owner = reinterpret_cast<PostbackOwner*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (owner) {
        try {
            owner->OnPostback(message - WM_USER, static_cast<unsigned>(wParam));
        } catch (...) {
            // Nobody above can take it: the caller is the system's message loop.
        }
    }
    return 0;
}

// The module that holds the window procedure, wherever it was linked into.
HINSTANCE ProcedureModule() noexcept {
    MEMORY_BASIC_INFORMATION memory = {};
    VirtualQuery(reinterpret_cast<const void*>(&PostbackProcedure), &memory, sizeof memory);
    return static_cast<HINSTANCE>(memory.AllocationBase);
}

// Finds a free class name and registers it. Names once registered stay so (see the destructor), so
// the search need not begin at 0 each time. Two threads must not find the same name free.
ATOM RegisterNextClass(HINSTANCE module, std::string& className) {
    const ZelBase::CriticalSectionLock lock(classNames);
    static unsigned firstPossible = 0;
    char name[32];
    WNDCLASSA existing;
    for (unsigned number = firstPossible;; ++number) {
        snprintf(name, sizeof name, "ZELHIDDENWINDOW%u", number);
        if (!GetClassInfoA(module, name, &existing)) {
            firstPossible = number;
            break;
        }
    }
    className = name;
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = PostbackProcedure;
    windowClass.hInstance = module;
    windowClass.lpszClassName = name;
    return RegisterClassA(&windowClass);
}

} // namespace

PostbackWindow::PostbackWindow(PostbackOwner& owner)
    : module_(ProcedureModule()), class_(RegisterNextClass(module_, className_)) {
    if (class_) {
        window_ = CreateWindowExA(0, className_.c_str(), "PostbackWindow", 0, 0, 0, 0, 0, nullptr,
                                  nullptr, module_, nullptr);
    }
    if (window_) {
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&owner));
    }
}

PostbackWindow::~PostbackWindow() {
    if (class_) {
        // The last release may come on another thread, which cannot destroy the window: nothing
        // that is still posted to it may reach the owner.
        SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
        // Deliberately in this order, although a class cannot be unregistered while its window
        // lives: it stays for the life of the process, and the next window takes the next number.
        UnregisterClassA(className_.c_str(), module_);
        DestroyWindow(window_);
    }
}

bool PostbackWindow::Post(unsigned code, WPARAM wParam, LPARAM lParam) const noexcept {
    return window_ && PostMessageA(window_, WM_USER + code, wParam, lParam);
}

} // namespace tervane
