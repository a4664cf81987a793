#pragma once

// One installed network adapter for scripts: a copy of its record (StaticAdapter) that never
// changes. The wider interface answers late-bound callers; the older one is for programs that were
// compiled when there was no other.

#include "component/Automation.h"
#include "component/Control.h"
#include "platform/adapters/StaticAdapter.h"

#include <TERVANELib.h>

namespace tervane {

class StaticAdapterInfo final
    : public AutomationObject<IStaticAdapterInfo2, Automation<IStaticAdapterInfo>, Control> {
public:
    // With an empty record when a script creates the object itself.
    StaticAdapterInfo(const ClassRow& row, IUnknown* outer, const StaticAdapter& adapter = {})
        : Object(row, outer), adapter_(adapter) {}

    // Of both interfaces.
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_Driver(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_UsingDhcp(long* result) override;
    HRESULT STDMETHODCALLTYPE get_AdapterType(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_BoundToTcpip(long* result) override;
    HRESULT STDMETHODCALLTYPE get_BoundIndirectlyOrDirectlyToTcpip(long* result) override;
    HRESULT STDMETHODCALLTYPE get_IsEnabled(long* result) override;
    HRESULT STDMETHODCALLTYPE get_IsFunctional(long* result) override;
    HRESULT STDMETHODCALLTYPE get_IsDnsStatic(long* result) override;
    HRESULT STDMETHODCALLTYPE get_HardwareAddress(BSTR* result) override;

    // IStaticAdapterInfo2 only.
    HRESULT STDMETHODCALLTYPE get_Cookie(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_ServiceName(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticIpAddress(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticSubnetMask(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticDefaultGateway(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticNameServers(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticDomainName(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_EthernetAdapter(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_PPPAdapter(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_WINSState(long* result) override;
    HRESULT STDMETHODCALLTYPE get_StaticWINSServers(VARIANT* result) override;

private:
    const StaticAdapter adapter_;
};

// Makes an object that holds this adapter; `iid` says which of its interfaces goes into `*out`,
// with a reference for the caller; null on failure. Any thread.
HRESULT CreateStaticAdapterInfo(const StaticAdapter& adapter, REFIID iid, void** out);

} // namespace tervane
