#include "objects/sharing/SharingService.h"

namespace tervane {
namespace {

constexpr DWORD kLongestStop = 30'000; // ms, dependent services included

} // namespace

DWORD SharingService::IsOn(bool& on) const {
    WindowsService::State state;
    const DWORD error = service_.Query(state);
    on = state.runs || state.startsByItself;
    return error;
}

DWORD SharingService::TurnOff(bool& rebootNeeded) const {
    rebootNeeded = false;
    bool isOn = false;
    DWORD error = IsOn(isOn);
    if (error != ERROR_SUCCESS || !isOn) {
        return error;
    }
    error = service_.Disable();
    if (error == ERROR_SUCCESS) {
        rebootNeeded = service_.Stop(kLongestStop) != ERROR_SUCCESS;
    }
    return error;
}

} // namespace tervane
