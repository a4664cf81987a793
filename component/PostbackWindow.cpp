#include "component/PostbackWindow.h"

#include "component/ComEdge.h"
#include <atomic>

namespace tervane {
namespace {

constexpr UINT kLastPostback = 0x7FFF;

// Programs that close all windows of a host, broadcasts and taskkill for instance, send WM_CLOSE to
// hidden ones, too; the object would never hear of its workers again. So that is left out, although
// a window does go by it as a rule.
LRESULT CALLBACK PostbackProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        return 0;
    }
    if (message < WM_USER || message > kLastPostback) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    auto* owner = reinterpret_cast<PostbackOwner*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (owner) {
        Contained([&] { owner->OnPostback(message - WM_USER, static_cast<unsigned>(wParam)); });
    }
    return 0;
}

// The module that holds the window procedure, wherever it was linked into.
HINSTANCE ProcedureModule() noexcept {
    MEMORY_BASIC_INFORMATION memory = {};
    VirtualQuery(reinterpret_cast<const void*>(&PostbackProcedure), &memory, sizeof memory);
    return static_cast<HINSTANCE>(memory.AllocationBase);
}

// Classes stay registered for the life of the process (see the destructor) and use up names that
// all programs of the desktop share. After so many, one load of this module makes its windows of
// the classes that it has registered itself: those of an earlier load name a procedure that is
// gone.
constexpr std::size_t kMostClasses = 64;

struct OwnClasses {
    // How many windows have asked for a class.
    std::atomic<std::size_t> asked = 0;
    // Where the search for a free number begins.
    std::atomic<unsigned> firstPossible = 0;
    // The numbers plus 1; 0 where none was registered.
    std::atomic<unsigned> numbers[kMostClasses] = {};
};
constinit OwnClasses ownClasses;

std::string ClassNameOf(unsigned number) {
    return "ZELHIDDENWINDOW" + std::to_string(number);
}

// Finds a free number and registers its class; false when the system does not want more classes.
bool RegisterNextClass(HINSTANCE module, unsigned& number) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = PostbackProcedure;
    windowClass.hInstance = module;
    WNDCLASSA existing;
    for (number = ownClasses.firstPossible;; ++number) {
        const std::string name = ClassNameOf(number);
        if (GetClassInfoA(module, name.c_str(), &existing)) {
            continue;
        }
        windowClass.lpszClassName = name.c_str();
        if (RegisterClassA(&windowClass)) {
            ownClasses.firstPossible = number + 1;
            return true;
        }
        if (GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
            return false; // another thread has not just been faster: it is no use
        }
    }
}

// The name of a class for one more window; empty when there is none.
std::string ChooseClass(HINSTANCE module) {
    const std::size_t asked = ownClasses.asked++;
    unsigned number = 0;
    if (asked < kMostClasses && RegisterNextClass(module, number)) {
        ownClasses.numbers[asked] = number + 1;
        return ClassNameOf(number);
    }
    for (std::size_t i = 0; i < kMostClasses; ++i) {
        if (const unsigned own = ownClasses.numbers[(asked + i) % kMostClasses]) {
            return ClassNameOf(own - 1);
        }
    }
    return {};
}

} // namespace

ZelBase::UniqueHandle OpenThisThread() noexcept {
    ZelBase::UniqueHandle thread;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), thread.Put(),
                    SYNCHRONIZE, FALSE, 0);
    return thread;
}

PostbackWindow::PostbackWindow(PostbackOwner& owner)
    : owner_(owner), module_(ProcedureModule()), className_(ChooseClass(module_)) {
    if (!className_.empty()) {
        window_ = CreateWindowExA(0, className_.c_str(), "PostbackWindow", 0, 0, 0, 0, 0, nullptr,
                                  nullptr, module_, nullptr);
    }
    if (window_) {
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&owner));
    }
}

PostbackWindow::~PostbackWindow() {
    if (!IsThere()) {
        return; // then the class must not go: others may be about to use it
    }
    // Nothing that is still posted may reach the owner.
    SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
    // Deliberately in this order, although a class cannot be unregistered while its window lives:
    // it stays for the life of the process, and the next window takes the next number.
    UnregisterClassA(className_.c_str(), module_);
    if (GetWindowThreadProcessId(window_, nullptr) == GetCurrentThreadId()) {
        DestroyWindow(window_);
    } else {
        // Only its own thread can destroy it, perhaps when this module is no longer there: the
        // system's procedure does so when it finds this message.
        SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DefWindowProcA));
        PostMessageA(window_, WM_CLOSE, 0, 0);
    }
}

bool PostbackWindow::IsThere() const noexcept {
    DWORD process = 0;
    GetWindowThreadProcessId(window_, &process);
    return process == GetCurrentProcessId() &&
           GetWindowLongPtrA(window_, GWLP_USERDATA) == reinterpret_cast<LONG_PTR>(&owner_);
}

bool PostbackWindow::Post(unsigned code, WPARAM wParam, LPARAM lParam) const noexcept {
    return window_ && PostMessageA(window_, WM_USER + code, wParam, lParam);
}

} // namespace tervane
