#pragma once

// Switches one adapter's address or name servers to DHCP or back, and removes static gateways,
// which stay in use beside those that DHCP gives. Adapters are named by the cookies that
// StaticAdapterInfo tells. The system takes the changes over when it starts the next time.

#include "component/Automation.h"
#include "objects/connectivity/AdapterConfiguration.h"

#include <TERVANELib.h>

namespace tervane {

class DHCPConfiguration final : public AutomationObject<IDHCPConfiguration> {
public:
    using Object::Object;

    // All three try what they can and return false when something failed; a dial-up adapter is left
    // alone, which is no failure.
    HRESULT STDMETHODCALLTYPE EnableIPToUseDhcp(BSTR cookie, VARIANT_BOOL enable,
                                                VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE EnableDnsToUseDhcp(BSTR cookie, VARIANT_BOOL enable,
                                                 VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetRidOfStaticGateways(VARIANT_BOOL* result) override;

    // Deliberately S_FALSE for a null pointer, as callers of this class know it.
    HRESULT STDMETHODCALLTYPE get_IsRebootNeeded(long* result) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* result) override;

private:
    using Change = DWORD (AdapterConfiguration::*)(const StaticAdapter& adapter, bool use) const;

    bool Apply(Change change, std::wstring_view cookie, bool use);

    // Set by every change that is tried, and never cleared.
    bool isRebootNeeded_ = false;
    // Of the last failure; a success leaves it as it is.
    DWORD lastErrorCode_ = 0;
};

} // namespace tervane
