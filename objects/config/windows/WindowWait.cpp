#include "objects/config/windows/WindowWait.h"

#include <algorithm>

namespace tervane {
namespace {

// So short that the finder looks once, pauses, and looks a last time.
constexpr LONG kOnePass = 1;

bool IsSignalled(HANDLE event) noexcept {
    return WaitForSingleObject(event, 0) != WAIT_TIMEOUT;
}

} // namespace

WindowWait::WindowWait(const Request& request)
    : finder_(request.topLevelPattern, request.childPattern), kind_(request.kind),
      timeoutForAppearanceOnly_(request.timeoutForAppearanceOnly),
      lastPass_(std::max<LONG>(request.timeout, 0)), pass_(request.timeout < 1 ? kUncounted : 0) {
    finder_.SetTimeLimit(kOnePass);
    finder_.SetCheckInterval(request.checkInterval);
    finder_.SetVisibleOnly(!request.includeInvisible);
}

std::optional<WaitResult> WindowWait::Run(HANDLE abort) {
    while (pass_ <= lastPass_) {
        if (IsSignalled(abort)) {
            return std::nullopt;
        }
        if (Test(abort)) {
            return WaitResult::kMet;
        }
        if (IsSignalled(abort)) {
            return std::nullopt;
        }
        if (pass_ != kUncounted) {
            ++pass_;
        }
    }
    return WaitResult::kTimedOut;
}

bool WindowWait::Test(HANDLE abort) {
    switch (kind_) {
    case Kind::kGone:
        return finder_.WaitUntilGone(abort);
    case Kind::kPresent:
        return finder_.WaitUntilPresent(abort) != nullptr;
    case Kind::kComeAndGo:
        return TestComeAndGo(abort);
    }
    return false;
}

// The window comes in one pass and goes in a later one at the earliest.
bool WindowWait::TestComeAndGo(HANDLE abort) {
    if (hasCome_) {
        return finder_.WaitUntilGone(abort);
    }
    hasCome_ = finder_.WaitUntilPresent(abort) != nullptr;
    if (hasCome_ && timeoutForAppearanceOnly_) {
        pass_ = kUncounted;
    }
    return false;
}

} // namespace tervane
