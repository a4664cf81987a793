#include "component/ClassFactory.h"

#include "component/ComEdge.h"
#include "component/ModuleState.h"

namespace tervane {
namespace {

// False when the library is being unloaded.
bool HoldModule(bool hold) noexcept {
    ModuleState* state = ModuleState::Get();
    if (!state) {
        return false;
    }
    if (hold) {
        state->AddLock();
    } else {
        state->ReleaseLock();
    }
    return true;
}

} // namespace

HRESULT STDMETHODCALLTYPE ClassFactory::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) {
        return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IClassFactory*>(this);
    return S_OK;
}

ULONG STDMETHODCALLTYPE ClassFactory::AddRef() {
    HoldModule(true);
    return ++references_;
}

ULONG STDMETHODCALLTYPE ClassFactory::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    } else {
        HoldModule(false);
    }
    return left;
}

HRESULT STDMETHODCALLTYPE ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    // The outer object has no identity to hand out yet but the inner unknown's.
    if (outer && !IsEqualIID(iid, IID_IUnknown)) {
        return CLASS_E_NOAGGREGATION;
    }
    return Guarded([&] { return row_.create(row_, outer, iid, out); });
}

HRESULT STDMETHODCALLTYPE ClassFactory::LockServer(BOOL lock) {
    return HoldModule(lock != FALSE) ? S_OK : E_UNEXPECTED;
}

} // namespace tervane
