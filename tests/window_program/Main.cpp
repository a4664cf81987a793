// A program with windows of every kind, for the tests to find, read and click.
// Options.h lists its arguments, TestWindow.h what it tells on its standard output.

#include "TestWindow.h"

#include <cstdlib>

namespace {

// On a thread of its own, so that it also ends a program that hangs on purpose.
DWORD WINAPI EndAfterLifetime(void* seconds) {
    Sleep(*static_cast<DWORD*>(seconds) * 1000);
    TerminateProcess(GetCurrentProcess(), 0);
    return 0;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    static Options options;
    if (!ReadOptions(__argc, __wargv, options)) {
        return 2;
    }
    CloseHandle(CreateThread(nullptr, 0, &EndAfterLifetime, &options.lifetimeSeconds, 0, nullptr));
    if (!TestWindow::Show(options)) {
        return 1;
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
