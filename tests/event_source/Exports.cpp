#include "tests/event_source/EventSource.h"

namespace tervane::test {
namespace {

class Factory : public scripthost::ComBase<IClassFactory> {
public:
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        ComPtr<IEventSource> source(new EventSource);
        return source->QueryInterface(iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

} // namespace
} // namespace tervane::test

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!IsEqualCLSID(clsid, __uuidof(EventSource))) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    tervane::ComPtr<IClassFactory> factory(new tervane::test::Factory);
    return factory->QueryInterface(iid, object);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}
