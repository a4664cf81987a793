#pragma once

// A hidden window through which a worker thread hands its completion to the thread that owns the
// object: what is posted from any thread arrives on the thread that created the window, when that
// thread pumps messages. Anybody may post to it: a post is a reason to look, and no news by itself.

#include "ZelBase/Handles.h"

#include <string>

#include <windows.h>

namespace tervane {

// Who is called on the window's thread.
class PostbackOwner {
public:
    virtual void OnPostback(unsigned code, unsigned wParam) = 0;

protected:
    ~PostbackOwner() = default;
};

// A handle to the calling thread, by which others notice that it has ended, and its windows with
// it: what has been posted to them by then is lost without a word. Null when there is none to have.
ZelBase::UniqueHandle OpenThisThread() noexcept;

class PostbackWindow {
public:
    // Creates the window on the calling thread. Destroyed elsewhere, it no longer reaches anybody
    // and goes when its thread pumps messages or ends. `owner` must outlive this object. When no
    // window can be created, posts are lost.
    explicit PostbackWindow(PostbackOwner& owner);
    ~PostbackWindow();
    PostbackWindow(const PostbackWindow&) = delete;
    PostbackWindow& operator=(const PostbackWindow&) = delete;

    // Calls OnPostback(code, wParam) on the window's thread, later. Codes from 0 to 0x7BFF. Any
    // thread; false when the message could not be posted.
    bool Post(unsigned code, WPARAM wParam, LPARAM lParam) const noexcept;

    // Null when the window could not be created.
    HWND Handle() const noexcept { return window_; }
    const std::string& ClassName() const noexcept { return className_; }

private:
    // Whether the handle still names the window that was made here: it may be gone with its thread,
    // and its handle another window's.
    bool IsThere() const noexcept;

    PostbackOwner& owner_;
    HINSTANCE module_;
    std::string className_; // empty without a class
    HWND window_ = nullptr;
};

} // namespace tervane
