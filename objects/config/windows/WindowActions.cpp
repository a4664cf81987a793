#include "objects/config/windows/WindowActions.h"

namespace tervane {
namespace {

constexpr UINT kAnswerPatienceMs = 1000;

// Clicks the first window that matches the finder's child pattern, the top-level window itself
// included, as the dialog would hear of it. Returns the button; null when that failed.
HWND Click(WindowFinder& finder) {
    HWND window = finder.Find();
    HWND button = window ? finder.FindBelow(window) : nullptr;
    const int id = button ? GetDlgCtrlID(button) : 0;
    if (id == 0) {
        return nullptr;
    }
    const WPARAM clicked = MAKEWPARAM(id, BN_CLICKED);
    return PostMessageA(window, WM_COMMAND, clicked, reinterpret_cast<LPARAM>(button)) ? button
                                                                                       : nullptr;
}

bool Answers(HWND window) noexcept {
    DWORD_PTR result = 0;
    return SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kAnswerPatienceMs,
                               &result) != 0;
}

// The plain call waits for the window's thread, for ever if need be; the other one cannot say when
// it has come about, so it is left for those that do not answer.
void Show(HWND window, int command) noexcept {
    if (Answers(window)) {
        ShowWindow(window, command);
    } else {
        ShowWindowAsync(window, command);
    }
}

} // namespace

WindowState StateOf(WindowFinder& finder) {
    HWND window = finder.Find();
    if (!window) {
        return WindowState::kNotFound;
    }
    return IsWindowVisible(window) ? WindowState::kVisible : WindowState::kInvisible;
}

bool ChangeState(WindowFinder& finder, StateChange change) {
    HWND window = finder.Find();
    if (!window) {
        return false;
    }
    switch (change) {
    case StateChange::kShow:
        Show(window, SW_SHOW);
        break;
    case StateChange::kHide:
        Show(window, SW_HIDE);
        break;
    case StateChange::kClose:
        // Looked for once more; it may be gone by now, and a message to no window would come back
        // to this thread.
        if (HWND last = finder.Find()) {
            PostMessageA(last, WM_CLOSE, 0, 0);
        }
        break;
    }
    return true;
}

std::wstring TitleOf(WindowFinder& finder) {
    HWND window = finder.Find();
    WindowTitle title;
    return window ? std::wstring(title.Read(window)) : std::wstring();
}

bool ClickButton(WindowFinder& finder) {
    return Click(finder) != nullptr;
}

// The click goes first, deliberately: a check box that toggles itself on the click still ends in
// the state asked for.
bool ClickAndCheck(WindowFinder& finder, bool checked) {
    HWND button = Click(finder);
    return button && PostMessageA(button, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

} // namespace tervane
