#include "bench/ManyWindows.h"

#include "bench/LateBound.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace bench {

namespace {

constexpr const char* kAsk = "windows";
constexpr std::wstring_view kTitle = L"Bench window number ";
constexpr std::wstring_view kChildTitle = L"Bench child of window number ";
constexpr DWORD kStartMilliseconds = 60000;

std::wstring TitleOf(HWND window) {
    wchar_t title[500];
    int length = GetWindowTextW(window, title, 500);
    return {title, static_cast<std::size_t>(length)};
}

BOOL CALLBACK RememberLast(HWND window, LPARAM lastTitle) {
    std::wstring title = TitleOf(window);
    if (title.starts_with(kTitle)) {
        *reinterpret_cast<std::wstring*>(lastTitle) = std::move(title);
    }
    return TRUE;
}

struct Search {
    const std::wstring& text;
    HWND found;
};

BOOL CALLBACK FindNext(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    if (TitleOf(window).find(search->text) == std::wstring::npos) {
        return TRUE;
    }
    search->found = window;
    return FALSE;
}

// The window or the first one below it with the text in its title, depth first.
HWND FindBelow(HWND window, const std::wstring& text) {
    if (TitleOf(window).find(text) != std::wstring::npos) {
        return window;
    }
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (HWND found = FindBelow(child, text)) {
            return found;
        }
    }
    return nullptr;
}

BOOL CALLBACK FindNextBelow(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    search->found = FindBelow(window, search->text);
    return search->found == nullptr;
}

HANDLE HandleFrom(const char* text) {
    return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(std::strtoull(text, nullptr, 10)));
}

std::wstring TextFrom(HANDLE handle) {
    return std::to_wstring(reinterpret_cast<ULONG_PTR>(handle));
}

HWND MakeWindow(const std::wstring& title, DWORD style, HWND parent) {
    return CreateWindowExW(0, L"STATIC", title.c_str(), style, 0, 0, 100, 100, parent, nullptr,
                           nullptr, nullptr);
}

bool MakeWindows(const Crowd& crowd) {
    for (int i = 0; i < crowd.windows; ++i) {
        const std::wstring number = std::to_wstring(i) + L".";
        const HWND window = MakeWindow(crowd.haveTitles ? std::wstring(kTitle) + number : L"",
                                       WS_OVERLAPPEDWINDOW, nullptr);
        bool isMade = window != nullptr;
        for (int child = 0; isMade && child < crowd.children; ++child) {
            isMade = MakeWindow(std::wstring(kChildTitle) + number + std::to_wstring(child) + L".",
                                WS_CHILD, window) != nullptr;
        }
        if (!isMade) {
            return false;
        }
    }
    return true;
}

// Shows the windows, reports through `ready`, and answers messages until `owner` ends.
int ShowWindows(const Crowd& crowd, HANDLE ready, HANDLE owner) {
    if (!MakeWindows(crowd)) {
        return 1;
    }
    SetEvent(ready);
    while (MsgWaitForMultipleObjects(1, &owner, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }
    return 0;
}

// A handle to this process that the second one inherits.
ZelBase::UniqueHandle InheritableSelf() {
    ZelBase::UniqueHandle self;
    DuplicateHandle(GetCurrentProcess(), GetCurrentProcess(), GetCurrentProcess(), self.Put(),
                    SYNCHRONIZE, TRUE, 0);
    return self;
}

} // namespace

ManyWindows::ManyWindows(const Crowd& crowd) : crowd_(crowd) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    ZelBase::UniqueHandle ready(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    ZelBase::UniqueHandle self = InheritableSelf();
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = L"bench windows " + std::to_wstring(crowd.windows) + L" " +
                           std::to_wstring(crowd.children) + (crowd.haveTitles ? L" 1 " : L" 0 ") +
                           TextFrom(ready.Get()) + L" " + TextFrom(self.Get());
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(program, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &started)) {
        Fail("starting the process with windows", HRESULT_FROM_WIN32(GetLastError()));
    }
    process_.Reset(started.hProcess);
    ZelBase::UniqueHandle thread(started.hThread);
    HANDLE either[] = {ready.Get(), process_.Get()};
    if (WaitForMultipleObjects(2, either, FALSE, kStartMilliseconds) != WAIT_OBJECT_0) {
        Fail("making the windows", E_FAIL);
    }
    EnumWindows(RememberLast, reinterpret_cast<LPARAM>(&lastTitle_));
}

ManyWindows::~ManyWindows() {
    TerminateProcess(process_.Get(), 0);
    WaitForSingleObject(process_.Get(), kStartMilliseconds);
}

std::wstring ManyWindows::LastChildTitle() const {
    return std::wstring(kChildTitle) + lastTitle_.substr(kTitle.size()) +
           std::to_wstring(crowd_.children - 1) + L".";
}

std::optional<int> ManyWindows::RunIfAsked(int argumentCount, char** arguments) {
    if (argumentCount != 7 || std::strcmp(arguments[1], kAsk) != 0) {
        return std::nullopt;
    }
    const Crowd crowd = {std::atoi(arguments[2]), std::atoi(arguments[3]), arguments[4][0] == '1'};
    return ShowWindows(crowd, HandleFrom(arguments[5]), HandleFrom(arguments[6]));
}

HWND FindByBareLoop(const std::wstring& text) {
    Search search = {text, nullptr};
    EnumWindows(FindNext, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND FindBelowByBareLoop(const std::wstring& text) {
    Search search = {text, nullptr};
    EnumWindows(FindNextBelow, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace bench
