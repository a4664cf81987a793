#include "tools/script_host/script/TimeLimit.h"

#include <algorithm>

namespace tervane::scripthost {
namespace {

// For the script's thread to disconnect its objects and close the engine.
constexpr DWORD kGraceMs = 1000;

} // namespace

TimeLimit::TimeLimit(std::function<void()> tell)
    : tell_(std::move(tell)), start_(GetTickCount()),
      over_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

TimeLimit::~TimeLimit() {
    SetEvent(over_.Get());
    Cancel();
}

bool TimeLimit::Set(DWORD seconds) {
    Cancel();
    if (seconds != 0) {
        const DWORD limit = seconds * 1000;
        const DWORD left = limit - std::min(limit, GetTickCount() - start_);
        if (!CreateTimerQueueTimer(&timer_, nullptr, OnTimer, this, left, 0,
                                   WT_EXECUTEONLYONCE | WT_EXECUTELONGFUNCTION)) {
            timer_ = nullptr;
            return false;
        }
    }
    seconds_ = seconds;
    return true;
}

// Waits for a callback that runs.
void TimeLimit::Cancel() {
    if (timer_ != nullptr) {
        DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE);
    }
    timer_ = nullptr;
    seconds_ = 0;
}

void TimeLimit::OnTimer(void* self, BOOLEAN) {
    const auto& limit = *static_cast<TimeLimit*>(self);
    limit.tell_();
    if (WaitForSingleObject(limit.over_.Get(), kGraceMs) != WAIT_OBJECT_0) {
        ExitProcess(kExitCode);
    }
}

} // namespace tervane::scripthost
