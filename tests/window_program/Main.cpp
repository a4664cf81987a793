// A program with windows of every kind, for the tests to find, read and click.
//
//   --title TEXT        title of the window
//   --hidden            create it invisible
//   --appear-after MS   create it that much later
//   --hang-after MS     stop answering messages that long after it appeared, for good
//   --group TEXT        a child that contains the controls up to --end; groups nest
//   --button TEXT       a push button; control identifiers count from 101 in the order given
//   --check-box TEXT    a check box
//   --end               closes the innermost group
//
// The program ends itself after a minute. What happens to the window is told on the standard
// output, a line each:
//
//   ready                      the window is there
//   command ID CODE LPARAM     WM_COMMAND came; LPARAM is "control" or, when it is not the handle
//                              of that control, "other"
//   set-check ID STATE         BM_SETCHECK came to a button
//   shown, hidden, closed      visibility changed; the window was closed and is gone
//   hanging                    from now on it does not answer

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <windows.h>

namespace {

constexpr wchar_t kWindowClass[] = L"TervaneTestWindow";
constexpr wchar_t kGroupClass[] = L"TervaneTestGroup";
constexpr int kFirstControlId = 101;
constexpr DWORD kLifetime = 60'000; // ms

std::wstring title = L"Tervane test window";
bool hidden = false;
std::map<std::wstring, UINT> times = {{L"--appear-after", 0},
                                      {L"--hang-after", 0}}; // ms; 0 is never
std::vector<std::pair<std::wstring, std::wstring>> controls; // option and text
WNDPROC systemButtonProcedure = nullptr;

// False when an argument is unknown or lacks its value.
bool ReadOptions() {
    for (int i = 1; i < __argc; ++i) {
        const std::wstring name = __wargv[i];
        const bool isAlone = name == L"--hidden" || name == L"--end";
        if (!isAlone && ++i == __argc) {
            return false;
        }
        hidden = hidden || name == L"--hidden";
        if (name == L"--title") {
            title = __wargv[i];
        } else if (times.count(name)) {
            times[name] = static_cast<UINT>(std::stoi(__wargv[i]));
        } else if (name == L"--group" || name == L"--button" || name == L"--check-box" ||
                   name == L"--end") {
            controls.emplace_back(name, __wargv[i]);
        } else if (name != L"--hidden") {
            return false;
        }
    }
    return true;
}

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

HWND CreateChild(HWND parent, const wchar_t* type, const std::wstring& text, DWORD style, int top,
                 int height, int id) {
    return CreateWindowExW(0, type, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, top, 300,
                           height, parent, reinterpret_cast<HMENU>(INT_PTR(id)),
                           GetModuleHandleW(nullptr), nullptr);
}

void AddControls(HWND window) {
    std::vector<HWND> parents = {window};
    int id = kFirstControlId;
    for (const auto& [option, text] : controls) {
        if (option == L"--end") {
            parents.pop_back();
        } else if (option == L"--group") {
            parents.push_back(CreateChild(parents.back(), kGroupClass, text, 0, 0, 300, 0));
        } else {
            CreateChild(parents.back(), L"BUTTON", text,
                        option == L"--check-box" ? BS_AUTOCHECKBOX : 0,
                        10 + 25 * (id - kFirstControlId), 22, id);
            ++id;
        }
    }
}

void Create() {
    // CreateWindowExW cuts nothing off; titles of any length come through.
    HWND window = CreateWindowExW(0, kWindowClass, title.c_str(), WS_OVERLAPPEDWINDOW, 20, 20, 320,
                                  340, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    AddControls(window);
    if (!hidden) {
        ShowWindow(window, SW_SHOWNOACTIVATE);
    }
    if (times[L"--hang-after"]) {
        SetTimer(window, 1, times[L"--hang-after"], nullptr);
    }
    Tell("ready");
}

void CALLBACK OnAppear(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    Create();
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
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
        Tell("hanging");
        Sleep(INFINITE); // until the program's lifetime is over
        return 0;
    case WM_CLOSE:
        DestroyWindow(window);
        Tell("closed");
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == BM_SETCHECK) {
        Tell("set-check %d %d", GetDlgCtrlID(button), int(wParam));
    }
    return CallWindowProcW(systemButtonProcedure, button, message, wParam, lParam);
}

LRESULT CALLBACK GroupProcedure(HWND group, UINT message, WPARAM wParam, LPARAM lParam) {
    // A click by hand goes to the button's parent; here it counts as the window's.
    return message == WM_COMMAND
               ? SendMessageW(GetAncestor(group, GA_ROOT), message, wParam, lParam)
               : DefWindowProcW(group, message, wParam, lParam);
}

bool RegisterClasses() {
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
    return RegisterClassW(&windowClass) && RegisterClassW(&groupClass) &&
           RegisterClassW(&buttonClass);
}

// On a thread of its own, so that it also ends a program that hangs on purpose.
DWORD WINAPI EndAfterLifetime(void*) {
    Sleep(kLifetime);
    TerminateProcess(GetCurrentProcess(), 0);
    return 0;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    if (!ReadOptions() || !RegisterClasses()) {
        return 2;
    }
    CloseHandle(CreateThread(nullptr, 0, &EndAfterLifetime, nullptr, 0, nullptr));
    if (times[L"--appear-after"]) {
        SetTimer(nullptr, 0, times[L"--appear-after"], &OnAppear);
    } else {
        Create();
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
