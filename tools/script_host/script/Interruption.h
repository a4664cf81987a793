#pragma once

// Ctrl+C, Ctrl+Break and the closing of the console. They arrive on a thread that the system makes
// for them; the script's thread is told to end and gets a moment to do so in good order. A script
// that neither sleeps nor calls its host, under an engine that cannot be interrupted, ends together
// with the process after that moment.

#include <windows.h>

#include <functional>

namespace tervane::scripthost {

class Interruption {
public:
    // What a program without a handler of its own ends with.
    static constexpr DWORD kExitCode = STATUS_CONTROL_C_EXIT;

    // `tell` is called on the system's thread, at most until the destructor returns, and must not
    // wait for the script's thread. At most one object may exist at a time.
    explicit Interruption(std::function<void()> tell);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

private:
    static BOOL WINAPI OnControl(DWORD kind);
    static bool TellCurrent() noexcept;

    const std::function<void()> tell_;
};

} // namespace tervane::scripthost
