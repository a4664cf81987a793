#include "soak/CountingSink.h"

namespace tervane::test {

CountingSink::Totals CountingSink::totals;

CountingSink::~CountingSink() {
    if (!endsSilently_) {
        totals.lost += promised_ - received_;
    }
    --totals.sinks;
}

// The event may come between the caller's question and the storing.
void CountingSink::ReleaseInEvent(IDispatch* object) {
    object_ = object;
    if (!IsOwed()) {
        ReleaseObject();
    }
}

void CountingSink::ReleaseObject() {
    if (IDispatch* object = object_.exchange(nullptr)) {
        object->Release();
    }
}

HRESULT STDMETHODCALLTYPE CountingSink::QueryInterface(REFIID iid, void** out) {
    const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
    *out = known ? this : nullptr;
    if (known) {
        AddRef();
    }
    return known ? S_OK : E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CountingSink::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT STDMETHODCALLTYPE CountingSink::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CountingSink::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*,
                                               VARIANT*, EXCEPINFO*, UINT*) {
    if (event != progress_) {
        ++received_;
        ++totals.received;
        ReleaseObject();
    }
    return S_OK;
}

} // namespace tervane::test
