#include "TestWindow.h"

#include <cstdio>

namespace {

constexpr wchar_t kWindowClass[] = L"TervaneTestWindow";
constexpr wchar_t kGroupClass[] = L"TervaneTestGroup";
constexpr int kFirstControlId = 101;

enum Timer : UINT_PTR { kVanish = 1, kHang };

const Options* shown = nullptr;
int windowsLeft = 0;
WNDPROC systemButtonProcedure = nullptr;

// With the write call itself, since a reader waits for each line.
void Tell(const char* line) {
    DWORD written = 0;
    const std::string text = std::string(line) + "\n";
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()),
              &written, nullptr);
}

template <typename... Values>
void Tell(const char* format, Values... values) {
    char line[100];
    std::snprintf(line, sizeof line, format, values...);
    Tell(line);
}

void AddControl(HWND parent, const ControlOption& control, int id, int row) {
    using Kind = ControlOption::Kind;
    const wchar_t* windowClass = control.kind == Kind::kEdit ? L"EDIT" : L"BUTTON";
    const DWORD style = control.kind == Kind::kCheckBox ? BS_AUTOCHECKBOX : 0;
    CreateWindowExW(0, windowClass, control.text.c_str(), WS_CHILD | WS_VISIBLE | style, 10,
                    10 + 25 * row, 250, 22, parent, reinterpret_cast<HMENU>(INT_PTR(id)),
                    GetModuleHandleW(nullptr), nullptr);
}

void AddControls(HWND window, const std::vector<ControlOption>& controls) {
    std::vector<HWND> parents = {window};
    int id = kFirstControlId;
    int row = 0;
    for (const ControlOption& control : controls) {
        if (control.kind == ControlOption::Kind::kEnd) {
            parents.pop_back();
        } else if (control.kind == ControlOption::Kind::kGroup) {
            parents.push_back(CreateWindowExW(0, kGroupClass, control.text.c_str(),
                                              WS_CHILD | WS_VISIBLE, 0, 0, 300, 300, parents.back(),
                                              nullptr, GetModuleHandleW(nullptr), nullptr));
        } else {
            AddControl(parents.back(), control, id++, row++);
        }
    }
}

void CreateOne(const std::wstring& title) {
    // CreateWindowExW cuts nothing off; titles of any length come through.
    HWND window = CreateWindowExW(0, kWindowClass, title.c_str(), WS_OVERLAPPEDWINDOW, 20, 20, 320,
                                  340, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ++windowsLeft;
    AddControls(window, shown->controls);
    if (!shown->hidden) {
        ShowWindow(window, SW_SHOWNOACTIVATE);
    }
    if (shown->vanishAfter) {
        SetTimer(window, kVanish, shown->vanishAfter, nullptr);
    }
    if (shown->hangAfter) {
        SetTimer(window, kHang, shown->hangAfter, nullptr);
    }
}

void CreateAll() {
    if (shown->count == 1) {
        CreateOne(shown->title);
    }
    for (int i = 1; shown->count > 1 && i <= shown->count; ++i) {
        CreateOne(shown->title + L" " + std::to_wstring(i));
    }
    Tell("ready");
}

void CALLBACK OnAppear(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    CreateAll();
}

void OnTimer(HWND window, WPARAM timer) {
    KillTimer(window, timer);
    if (timer == kVanish) {
        DestroyWindow(window);
        Tell("vanished");
    } else {
        Tell("hanging");
        Sleep(INFINITE); // until the program's lifetime is over
    }
}

} // namespace

LRESULT CALLBACK TestWindow::WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                             LPARAM lParam) {
    switch (message) {
    case WM_COMMAND: {
        const auto sender = reinterpret_cast<HWND>(lParam);
        const bool isControl = IsWindow(sender) && GetDlgCtrlID(sender) == LOWORD(wParam);
        Tell("command %d %d %s", int(LOWORD(wParam)), int(HIWORD(wParam)),
             isControl ? "control" : "other");
        return 0;
    }
    case WM_SHOWWINDOW:
        Tell(wParam ? "shown" : "hidden");
        break;
    case WM_TIMER:
        OnTimer(window, wParam);
        return 0;
    case WM_CLOSE:
        DestroyWindow(window);
        Tell("closed");
        return 0;
    case WM_DESTROY:
        if (--windowsLeft == 0) {
            PostQuitMessage(0);
        }
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK TestWindow::ButtonProcedure(HWND button, UINT message, WPARAM wParam,
                                             LPARAM lParam) {
    if (message == BM_SETCHECK) {
        Tell("set-check %d %d", GetDlgCtrlID(button), int(wParam));
    }
    return CallWindowProcW(systemButtonProcedure, button, message, wParam, lParam);
}

LRESULT CALLBACK TestWindow::GroupProcedure(HWND group, UINT message, WPARAM wParam,
                                            LPARAM lParam) {
    // A click by hand goes to the button's parent; here it counts as the window's.
    return message == WM_COMMAND
               ? SendMessageW(GetAncestor(group, GA_ROOT), message, wParam, lParam)
               : DefWindowProcW(group, message, wParam, lParam);
}

bool TestWindow::Show(const Options& options) {
    shown = &options;
    WNDCLASSW windowClass = {};
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpfnWndProc = &WindowProcedure;
    windowClass.lpszClassName = kWindowClass;
    WNDCLASSW groupClass = windowClass;
    groupClass.lpfnWndProc = &GroupProcedure;
    groupClass.lpszClassName = kGroupClass;
    // A class of this program's own hides the system's buttons: so every button tells of its check.
    WNDCLASSW buttonClass = {};
    GetClassInfoW(nullptr, L"BUTTON", &buttonClass);
    systemButtonProcedure = buttonClass.lpfnWndProc;
    buttonClass.lpfnWndProc = &ButtonProcedure;
    buttonClass.lpszClassName = L"BUTTON";
    buttonClass.hInstance = windowClass.hInstance;
    buttonClass.style &= ~CS_GLOBALCLASS;
    if (!RegisterClassW(&windowClass) || !RegisterClassW(&groupClass) ||
        !RegisterClassW(&buttonClass)) {
        return false;
    }
    if (options.appearAfter) {
        SetTimer(nullptr, 0, options.appearAfter, &OnAppear);
    } else {
        CreateAll();
    }
    return true;
}
