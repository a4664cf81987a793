#pragma once

// Late binding, written once: the IDispatch methods of a dual interface answer from the embedded
// type library, whose Invoke calls the interface's own methods.

#include "component/ClassTable.h"
#include "component/Object.h"
#include "component/TypeLibrary.h"

#include <ocidl.h>

namespace tervane {

// What the templates below share. `info` may be null: then the type library could not be loaded,
// TYPE_E_CANTLOADLIBRARY.
HRESULT DispatchGetTypeInfo(ITypeInfo* info, UINT index, ITypeInfo** out) noexcept;
HRESULT DispatchGetIDsOfNames(ITypeInfo* info, REFIID reserved, LPOLESTR* names, UINT count,
                              DISPID* ids) noexcept;
HRESULT DispatchInvoke(ITypeInfo* info, void* object, DISPID member, REFIID reserved, WORD flags,
                       DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                       UINT* argumentError) noexcept;

// A dual interface. The first one that a class lists answers for IDispatch as well.
template <typename Interface>
class Automation : public Interface {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** out) override {
        return DispatchGetTypeInfo(TypeInfoOf<Interface>(), index, out);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        return DispatchGetIDsOfNames(TypeInfoOf<Interface>(), reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override {
        return DispatchInvoke(TypeInfoOf<Interface>(), static_cast<Interface*>(this), member,
                              reserved, flags, parameters, result, exception, argumentError);
    }

    void* FindInterface(REFIID iid) noexcept {
        return IsEqualIID(iid, __uuidof(Interface)) || IsEqualIID(iid, IID_IDispatch)
                   ? static_cast<Interface*>(this)
                   : nullptr;
    }

protected:
    explicit Automation(const ClassRow&) noexcept {}
    ~Automation() = default;
};

// Tells hosts what the object is: its coclass, by which script hosts find the event interface, and
// that errors of its interfaces may carry error information.
class ClassInfo : public IProvideClassInfo2, public ISupportErrorInfo {
public:
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** out) override;
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* guid) override;
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override;

    void* FindInterface(REFIID iid) noexcept;

protected:
    explicit ClassInfo(const ClassRow& row) noexcept : row_(row) {}
    ~ClassInfo() = default;

private:
    const ClassRow& row_;
};

// The frame of every class: its default interface and whatever else it lists.
template <typename Default, typename... More>
using AutomationObject = Object<Automation<Default>, More..., ClassInfo>;

} // namespace tervane
