#pragma once

// One network interface as scripts see it: the facts of a LiveAdapter as they were when the list
// was made. They never change, so the object may be made on one thread and handed to another.

#include "component/Automation.h"
#include "component/Control.h"
#include "platform/adapters/LiveAdapter.h"

#include <TERVANELib.h>

namespace tervane {

// A new object with a copy of the adapter's facts, asked for `iid`. IDispatch is that of
// ILiveAdapterInfo2. The caller owns the reference; null on failure. Any thread.
HRESULT CreateLiveAdapterInfo(const LiveAdapter& adapter, REFIID iid, void** out);

// ILiveAdapterInfo2 has all members and stands first, so that scripts reach them. Both interfaces
// name and number their common members alike: one implementation serves both.
class LiveAdapterInfo final
    : public AutomationObject<ILiveAdapterInfo2, Automation<ILiveAdapterInfo>, Control> {
public:
    // An object that a script creates itself knows no adapter: empty texts, "0.0.0.0" and 0.
    LiveAdapterInfo(const ClassRow& row, IUnknown* outer, const LiveAdapter& adapter = {})
        : Object(row, outer), adapter_(adapter) {}

    HRESULT STDMETHODCALLTYPE get_Name(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_IpAddress(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_SubnetMask(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_DefaultGateway(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_HardwareAddress(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_DhcpServer(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_IsDhcp(long* value) override;
    HRESULT STDMETHODCALLTYPE get_IsEthernetAdapter(long* value) override;
    HRESULT STDMETHODCALLTYPE get_IsPppAdapter(long* value) override;
    HRESULT STDMETHODCALLTYPE get_Cookie(BSTR* text) override;
    HRESULT STDMETHODCALLTYPE get_ServiceName(BSTR* text) override;

private:
    const LiveAdapter adapter_;
};

} // namespace tervane
