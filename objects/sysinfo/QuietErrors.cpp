#include "objects/sysinfo/QuietErrors.h"

namespace tervane {
namespace {

constexpr DWORD kNoBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

// Since Windows 7.
using SetThreadMode = BOOL(WINAPI*)(DWORD mode, DWORD* before);

SetThreadMode ThreadMode() noexcept {
    static const auto function = reinterpret_cast<SetThreadMode>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "SetThreadErrorMode")));
    return function;
}

} // namespace

QuietErrors::QuietErrors() noexcept {
    if (ThreadMode()) {
        ThreadMode()(kNoBoxes, &before_);
    } else {
        before_ = SetErrorMode(kNoBoxes);
    }
}

QuietErrors::~QuietErrors() {
    if (ThreadMode()) {
        ThreadMode()(before_, nullptr);
    } else {
        SetErrorMode(before_);
    }
}

} // namespace tervane
