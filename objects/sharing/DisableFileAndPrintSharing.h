#pragma once

// The switch of file and printer sharing for scripts; see SharingSwitch.h.

#include "component/Automation.h"

#include <TERVANELib.h>

namespace tervane {

class DisableFileAndPrintSharing final : public AutomationObject<IDisableFileAndPrintSharing> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE get_IsSharingEnabled(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DisableSharing(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_IsRebootNeeded(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* result) override;

private:
    DWORD lastError_ = ERROR_SUCCESS;
    bool isRebootNeeded_ = false;
};

} // namespace tervane
