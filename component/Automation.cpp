#include "component/Automation.h"

#include "component/ComEdge.h"

#include <olectl.h>

namespace tervane {

HRESULT DispatchGetTypeInfo(ITypeInfo* info, UINT index, ITypeInfo** out) noexcept {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (index != 0) {
        return DISP_E_BADINDEX;
    }
    if (!info) {
        return TYPE_E_CANTLOADLIBRARY;
    }
    info->AddRef();
    *out = info;
    return S_OK;
}

HRESULT DispatchGetIDsOfNames(ITypeInfo* info, REFIID reserved, LPOLESTR* names, UINT count,
                              DISPID* ids) noexcept {
    if (!IsEqualIID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (!names || !ids || count == 0) {
        return E_INVALIDARG;
    }
    if (!info) {
        return TYPE_E_CANTLOADLIBRARY;
    }
    return Guarded([&] {
        return count == 1 && names[0] ? MemberId(info, names[0], ids)
                                      : info->GetIDsOfNames(names, count, ids);
    });
}

HRESULT DispatchInvoke(ITypeInfo* info, void* object, DISPID member, REFIID reserved, WORD flags,
                       DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                       UINT* argumentError) noexcept {
    if (!IsEqualIID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (!parameters || (parameters->cArgs != 0 && !parameters->rgvarg)) {
        return E_INVALIDARG;
    }
    if (!info) {
        return TYPE_E_CANTLOADLIBRARY;
    }
    return Guarded([&]() -> HRESULT {
        // Not every system's Invoke minds arguments that nobody takes.
        if (parameters->cArgs > 0 &&
            parameters->cArgs > MostArguments(info, member, flags).value_or(parameters->cArgs)) {
            return DISP_E_BADPARAMCOUNT;
        }
        const auto invoke = [&](WORD kind) {
            return info->Invoke(object, member, kind, parameters, result, exception, argumentError);
        };
        const HRESULT status = invoke(flags);
        // VBScript's `Set object.Property = other` asks for putref only; ours are plain puts.
        return status == DISP_E_MEMBERNOTFOUND && flags == DISPATCH_PROPERTYPUTREF
                   ? invoke(DISPATCH_PROPERTYPUT)
                   : status;
    });
}

HRESULT STDMETHODCALLTYPE ClassInfo::GetClassInfo(ITypeInfo** out) {
    return DispatchGetTypeInfo(TypeInfoFor(*row_.clsid), 0, out);
}

HRESULT STDMETHODCALLTYPE ClassInfo::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) {
        return E_POINTER;
    }
    *guid = GUID_NULL;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID || !row_.eventInterface) {
        return E_INVALIDARG;
    }
    *guid = *row_.eventInterface;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ClassInfo::InterfaceSupportsErrorInfo(REFIID iid) {
    if (IsEqualIID(iid, *row_.defaultInterface)) {
        return S_OK;
    }
    // A second interface of the object, which the type library then knows too.
    ComPtr<IUnknown> found;
    return TypeInfoFor(iid) && SUCCEEDED(static_cast<IProvideClassInfo2*>(this)->QueryInterface(
                                   iid, reinterpret_cast<void**>(found.Put())))
               ? S_OK
               : S_FALSE;
}

void* ClassInfo::FindInterface(REFIID iid) noexcept {
    if (IsEqualIID(iid, IID_IProvideClassInfo) || IsEqualIID(iid, IID_IProvideClassInfo2)) {
        return static_cast<IProvideClassInfo2*>(this);
    }
    return IsEqualIID(iid, IID_ISupportErrorInfo) ? static_cast<ISupportErrorInfo*>(this) : nullptr;
}

} // namespace tervane
