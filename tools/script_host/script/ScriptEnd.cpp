#include "tools/script_host/script/ScriptEnd.h"

namespace tervane::scripthost {

void ScriptEnd::Request(DWORD exitCode) noexcept {
    State expected = State::kRunning;
    if (state_.compare_exchange_strong(expected, State::kClaimed)) {
        exitCode_ = exitCode;
        state_ = State::kRequested;
        SetEvent(signal_.Get());
    }
}

} // namespace tervane::scripthost
