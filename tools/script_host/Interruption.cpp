#include "tools/script_host/Interruption.h"

#include <mutex>

namespace tervane::scripthost {
namespace {

// For the script's thread to disconnect its objects and close the engine.
constexpr DWORD kGraceMs = 1000;

std::mutex currentMutex;
Interruption* current = nullptr; // guarded by currentMutex

} // namespace

Interruption::Interruption(std::function<void()> tell) : tell_(std::move(tell)) {
    {
        std::lock_guard lock(currentMutex);
        current = this;
    }
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(OnControl, FALSE);
    std::lock_guard lock(currentMutex);
    current = nullptr;
}

bool Interruption::TellCurrent() noexcept {
    std::lock_guard lock(currentMutex);
    if (current == nullptr) {
        return false;
    }
    current->tell_();
    return true;
}

BOOL Interruption::OnControl(DWORD) {
    if (!TellCurrent()) {
        return FALSE;
    }
    // The process usually ends during this wait.
    Sleep(kGraceMs);
    ExitProcess(kExitCode);
}

} // namespace tervane::scripthost
