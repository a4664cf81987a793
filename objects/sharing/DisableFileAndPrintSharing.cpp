#include "objects/sharing/DisableFileAndPrintSharing.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/sharing/SharingSwitch.h"
#include "platform/SystemError.h"

namespace tervane {
namespace {

// Runs `use`, which returns a Windows error code, on the switch of this system.
template <typename Use>
DWORD UseSwitch(Use use) {
    const std::unique_ptr<SharingSwitch> sharing = SharingSwitch::For(CurrentPlatformFamily());
    return sharing ? use(*sharing) : static_cast<DWORD>(ERROR_NOT_SUPPORTED);
}

} // namespace

HRESULT DisableFileAndPrintSharing::get_IsSharingEnabled(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        bool isOn = false;
        lastError_ = UseSwitch([&](const SharingSwitch& sharing) { return sharing.IsOn(isOn); });
        return lastError_ == ERROR_SUCCESS && isOn;
    });
}

HRESULT DisableFileAndPrintSharing::DisableSharing(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        bool needsReboot = false;
        lastError_ =
            UseSwitch([&](const SharingSwitch& sharing) { return sharing.TurnOff(needsReboot); });
        isRebootNeeded_ = isRebootNeeded_ || needsReboot;
        return lastError_ == ERROR_SUCCESS;
    });
}

HRESULT DisableFileAndPrintSharing::get_IsRebootNeeded(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] { return isRebootNeeded_; });
}

HRESULT DisableFileAndPrintSharing::get_LastError(BSTR* result) {
    return AnswerText(result, [&] { return SystemErrorText(lastError_); });
}

HRESULT DisableFileAndPrintSharing::get_LastErrorCode(long* result) {
    return AnswerNumber(result, [&] { return lastError_; });
}

namespace create {

HRESULT DisableFileAndPrintSharing(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::DisableFileAndPrintSharing>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
