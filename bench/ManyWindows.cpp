#include "bench/ManyWindows.h"

#include "bench/LateBound.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace bench {

namespace {

constexpr const char* kAsk = "windows";
constexpr std::wstring_view kTitle = L"Bench window number ";
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

HANDLE HandleFrom(const char* text) {
    return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(std::strtoull(text, nullptr, 10)));
}

std::wstring TextFrom(HANDLE handle) {
    return std::to_wstring(reinterpret_cast<ULONG_PTR>(handle));
}

// Shows the windows, reports through `ready`, and answers messages until `owner` ends.
int ShowWindows(int count, HANDLE ready, HANDLE owner) {
    for (int i = 0; i < count; ++i) {
        std::wstring title = std::wstring(kTitle) + std::to_wstring(i) + L".";
        if (CreateWindowExW(0, L"STATIC", title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 100, 100,
                            nullptr, nullptr, nullptr, nullptr) == nullptr) {
            return 1;
        }
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

ManyWindows::ManyWindows(int count) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    ZelBase::UniqueHandle ready(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    ZelBase::UniqueHandle self = InheritableSelf();
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = L"bench windows " + std::to_wstring(count) + L" " +
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

std::optional<int> ManyWindows::RunIfAsked(int argumentCount, char** arguments) {
    if (argumentCount != 5 || std::strcmp(arguments[1], kAsk) != 0) {
        return std::nullopt;
    }
    return ShowWindows(std::atoi(arguments[2]), HandleFrom(arguments[3]), HandleFrom(arguments[4]));
}

HWND FindByBareLoop(const std::wstring& text) {
    Search search = {text, nullptr};
    EnumWindows(FindNext, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace bench
