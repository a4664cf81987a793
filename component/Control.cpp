#include "component/Control.h"

#include <cwchar>

#include <olectl.h>

namespace tervane {
namespace {

// Hands out `pointer` with a reference; null is handed out as null.
template <typename Interface>
HRESULT GiveReference(const ComPtr<Interface>& pointer, Interface** out) noexcept {
    if (!out) {
        return E_POINTER;
    }
    *out = AddReference(pointer.Get()).Release();
    return S_OK;
}

HRESULT CopyExtent(const SIZEL& extent, SIZEL* out) noexcept {
    if (!out) {
        return E_POINTER;
    }
    *out = extent;
    return S_OK;
}

} // namespace

void* Control::FindInterface(REFIID iid) noexcept {
    const auto isOneOf = [&iid](auto... ids) { return (IsEqualIID(iid, *ids) || ...); };
    if (isOneOf(&IID_IOleObject)) {
        return static_cast<IOleObject*>(this);
    }
    if (isOneOf(&IID_IOleControl)) {
        return static_cast<IOleControl*>(this);
    }
    if (isOneOf(&IID_IOleWindow, &IID_IOleInPlaceObject)) {
        return static_cast<IOleInPlaceObject*>(this);
    }
    if (isOneOf(&IID_IViewObject, &IID_IViewObject2, &IID_IViewObjectEx)) {
        return static_cast<IViewObjectEx*>(this);
    }
    if (isOneOf(&IID_IPersist, &IID_IPersistStreamInit)) {
        return static_cast<IPersistStreamInit*>(this);
    }
    if (isOneOf(&IID_IPersistStorage)) {
        return static_cast<IPersistStorage*>(this);
    }
    if (isOneOf(&IID_IPersistPropertyBag)) {
        return static_cast<IPersistPropertyBag*>(this);
    }
    return nullptr;
}

HRESULT STDMETHODCALLTYPE Control::SetClientSite(IOleClientSite* site) {
    clientSite_ = AddReference(site);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetClientSite(IOleClientSite** site) {
    return GiveReference(clientSite_, site);
}

HRESULT STDMETHODCALLTYPE Control::SetHostNames(LPCOLESTR, LPCOLESTR) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::Close(DWORD) {
    if (advises_) {
        advises_->SendOnClose();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::SetMoniker(DWORD, IMoniker*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::GetMoniker(DWORD, DWORD, IMoniker** moniker) {
    if (moniker) {
        *moniker = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::InitFromData(IDataObject*, BOOL, DWORD) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::GetClipboardData(DWORD, IDataObject** data) {
    if (data) {
        *data = nullptr;
    }
    return E_NOTIMPL;
}

// Being shown and activated succeed, with nothing to see; anything else is no verb of a control
// without a user interface.
HRESULT STDMETHODCALLTYPE Control::DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND, LPCRECT) {
    return verb >= OLEIVERB_INPLACEACTIVATE && verb <= OLEIVERB_PRIMARY ? S_OK
                                                                        : OLEOBJ_S_INVALIDVERB;
}

HRESULT STDMETHODCALLTYPE Control::EnumVerbs(IEnumOLEVERB** verbs) {
    if (!verbs) {
        return E_POINTER;
    }
    *verbs = nullptr;
    return OLEOBJ_E_NOVERBS;
}

HRESULT STDMETHODCALLTYPE Control::Update() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::IsUpToDate() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetUserClassID(CLSID* clsid) {
    return GetClassID(clsid);
}

HRESULT STDMETHODCALLTYPE Control::GetUserType(DWORD, LPOLESTR* type) {
    if (!type) {
        return E_POINTER;
    }
    const std::size_t size = (wcslen(row_.description) + 1) * sizeof(wchar_t);
    *type = static_cast<LPOLESTR>(CoTaskMemAlloc(size));
    if (!*type) {
        return E_OUTOFMEMORY;
    }
    memcpy(*type, row_.description, size);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::SetExtent(DWORD aspect, SIZEL* extent) {
    if (!extent) {
        return E_POINTER;
    }
    if (aspect != DVASPECT_CONTENT) {
        return DV_E_DVASPECT;
    }
    extent_ = *extent;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetExtent(DWORD aspect, SIZEL* extent) {
    return aspect == DVASPECT_CONTENT ? CopyExtent(extent_, extent) : DV_E_DVASPECT;
}

HRESULT STDMETHODCALLTYPE Control::Advise(IAdviseSink* sink, DWORD* connection) {
    if (!advises_) {
        if (const HRESULT result = CreateOleAdviseHolder(advises_.Put()); FAILED(result)) {
            return result;
        }
    }
    return advises_->Advise(sink, connection);
}

HRESULT STDMETHODCALLTYPE Control::Unadvise(DWORD connection) {
    return advises_ ? advises_->Unadvise(connection) : OLE_E_NOCONNECTION;
}

HRESULT STDMETHODCALLTYPE Control::EnumAdvise(IEnumSTATDATA** connections) {
    if (!connections) {
        return E_POINTER;
    }
    *connections = nullptr;
    return advises_ ? advises_->EnumAdvise(connections) : S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetMiscStatus(DWORD aspect, DWORD* status) {
    if (!status) {
        return E_POINTER;
    }
    *status = aspect == DVASPECT_CONTENT ? kControlMiscStatus : 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::SetColorScheme(LOGPALETTE*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::GetControlInfo(CONTROLINFO* info) {
    if (!info) {
        return E_POINTER;
    }
    info->hAccel = nullptr;
    info->cAccel = 0;
    info->dwFlags = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::OnMnemonic(MSG*) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::OnAmbientPropertyChange(DISPID) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::FreezeEvents(BOOL) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetWindow(HWND* window) {
    if (!window) {
        return E_POINTER;
    }
    *window = nullptr;
    return E_FAIL;
}

HRESULT STDMETHODCALLTYPE Control::ContextSensitiveHelp(BOOL) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::InPlaceDeactivate() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::UIDeactivate() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::SetObjectRects(LPCRECT, LPCRECT) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::ReactivateAndUndo() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::Draw(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, HDC, LPCRECTL,
                                        LPCRECTL, BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC,
                                               LOGPALETTE** colors) {
    if (colors) {
        *colors = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::Freeze(DWORD, LONG, void*, DWORD*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::Unfreeze(DWORD) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    viewAspects_ = aspects;
    viewFlags_ = flags;
    viewSink_ = AddReference(sink);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    if (aspects) {
        *aspects = viewAspects_;
    }
    if (flags) {
        *flags = viewFlags_;
    }
    return sink ? GiveReference(viewSink_, sink) : S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL extent) {
    return GetExtent(aspect, extent);
}

HRESULT STDMETHODCALLTYPE Control::GetRect(DWORD, LPRECTL) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE Control::GetViewStatus(DWORD* status) {
    if (!status) {
        return E_POINTER;
    }
    *status = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::QueryHitPoint(DWORD, LPCRECT, POINT, LONG, DWORD* result) {
    if (!result) {
        return E_POINTER;
    }
    *result = HITRESULT_OUTSIDE;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::QueryHitRect(DWORD, LPCRECT, LPCRECT, LONG, DWORD* result) {
    if (!result) {
        return E_POINTER;
    }
    *result = HITRESULT_OUTSIDE;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::GetNaturalExtent(DWORD, LONG, DVTARGETDEVICE*, HDC,
                                                    DVEXTENTINFO*, LPSIZEL size) {
    return CopyExtent(extent_, size);
}

HRESULT STDMETHODCALLTYPE Control::GetClassID(CLSID* clsid) {
    if (!clsid) {
        return E_POINTER;
    }
    *clsid = *row_.clsid;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::IsDirty() {
    return S_FALSE;
}

HRESULT STDMETHODCALLTYPE Control::InitNew() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::Load(IStream* stream) {
    return stream ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::Save(IStream* stream, BOOL) {
    return stream ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::GetSizeMax(ULARGE_INTEGER* size) {
    if (!size) {
        return E_POINTER;
    }
    size->QuadPart = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::InitNew(IStorage* storage) {
    return storage ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::Load(IStorage* storage) {
    return storage ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::Save(IStorage* storage, BOOL) {
    return storage ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::SaveCompleted(IStorage*) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::HandsOffStorage() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE Control::Load(IPropertyBag* bag, IErrorLog*) {
    return bag ? S_OK : E_POINTER;
}

HRESULT STDMETHODCALLTYPE Control::Save(IPropertyBag* bag, BOOL, BOOL) {
    return bag ? S_OK : E_POINTER;
}

} // namespace tervane
