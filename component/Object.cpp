#include "component/Object.h"

namespace tervane {

HRESULT STDMETHODCALLTYPE ObjectRoot::InnerUnknown::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (IsEqualIID(iid, IID_IUnknown)) {
        *out = static_cast<IUnknown*>(this);
    } else {
        *out = object_.Find(iid);
    }
    if (!*out) {
        return E_NOINTERFACE;
    }
    static_cast<IUnknown*>(*out)->AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE ObjectRoot::InnerUnknown::AddRef() {
    return ++references_;
}

ULONG STDMETHODCALLTYPE ObjectRoot::InnerUnknown::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        // Whatever the destructor calls may take and drop references; they must not end it twice.
        references_ = 1;
        delete &object_;
    }
    return left;
}

} // namespace tervane
