#pragma once

// Fires its events directly on whatever thread it is about, as components do that care little for
// apartments. Its destructor waits for its threads, which is where a sink that blocks would
// deadlock; then it tells standard error that it is gone. How many sinks nobody disconnected is
// told there too, at the end of the process.

#include "platform/ComValues.h"
#include "tests/support/TestThreads.h"
#include "tools/script_host/ComBase.h"

#include <ocidl.h>

#include <EventSourceLib.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace tervane::test {

class EventSource
    : public scripthost::ComBase<IEventSource, IConnectionPointContainer, IConnectionPoint,
                                 IProvideClassInfo2, IObjectWithSite> {
public:
    EventSource();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** type) override;
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

    // IEventSource
    STDMETHODIMP FireLater(LONG count, LONG delay) override;
    STDMETHODIMP FireHere(LONG number) override;
    STDMETHODIMP FireValues() override;
    STDMETHODIMP FireForEver() override;
    STDMETHODIMP WaitForThreads() override;
    STDMETHODIMP PressCtrlC(LONG delay) override;
    STDMETHODIMP get_Advised(LONG* count) override;

    // IConnectionPointContainer and IConnectionPoint
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;
    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** type) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

    // IObjectWithSite, as many controls have it: an engine may refuse an object that it has no site
    // for.
    STDMETHODIMP SetSite(IUnknown*) override { return S_OK; }
    STDMETHODIMP GetSite(REFIID, void**) override { return E_FAIL; }

private:
    using Sinks = std::vector<ComPtr<IDispatch>>;

    ~EventSource() override;
    // The sinks of this moment. A thread goes on calling them, whoever disconnects meanwhile.
    std::shared_ptr<Sinks> CurrentSinks();
    void Start(std::function<void()> body);

    ComPtr<ITypeLib> library_;
    ComPtr<ITypeInfo> type_;
    std::vector<TestThread> threads_;
    TestMutex mutex_;
    std::map<DWORD, ComPtr<IDispatch>> sinks_; // guarded by mutex_
    DWORD lastCookie_ = 0;                     // guarded by mutex_
};

} // namespace tervane::test
