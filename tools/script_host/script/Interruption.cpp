#include "tools/script_host/script/Interruption.h"

#include "ZelBase/threads/CriticalSection.h"

namespace tervane::scripthost {
namespace {

// For the script's thread to disconnect its objects and close the engine.
constexpr DWORD kGraceMs = 1000;

// Never destroyed: the system's thread may come to it while the process ends.
ZelBase::CriticalSection& currentMutex = *new ZelBase::CriticalSection;
Interruption* current = nullptr; // guarded by currentMutex

} // namespace

Interruption::Interruption(std::function<void()> tell) : tell_(std::move(tell)) {
    {
        const ZelBase::CriticalSectionLock lock(currentMutex);
        current = this;
    }
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(OnControl, FALSE);
    const ZelBase::CriticalSectionLock lock(currentMutex);
    current = nullptr;
}

bool Interruption::TellCurrent() noexcept {
    const ZelBase::CriticalSectionLock lock(currentMutex);
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
