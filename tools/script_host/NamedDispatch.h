#pragma once

// Automation objects without a type library: a class lists its members by name in one table, and
// IDispatch is served from it. Names are found in any case, as VBScript needs it.
//
// `Self` derives from NamedDispatch<Self> and provides
//     static std::span<const Member> Members();
//     static constexpr const wchar_t* kName;   // the source of its errors

#include "component/ComEdge.h"
#include "tools/script_host/ComBase.h"
#include "tools/script_host/events/CallArguments.h"

#include <oaidl.h>

#include <algorithm>
#include <cwchar>
#include <span>
#include <string>

namespace tervane::scripthost {

// What a member answers: success, or a failure code with a text for whoever reads the message.
struct CallOutcome {
    HRESULT code = S_OK;
    std::wstring description;
};

template <typename Self>
class NamedDispatch : public ComBase<IDispatch> {
public:
    struct Member {
        const wchar_t* name;
        DISPID id;
        // The DISPATCH_ flags by which it may be called; any one of them will do.
        WORD kinds;
        CallOutcome (Self::*call)(const CallArguments& arguments, Variant& result);
    };
    static constexpr WORD kMethod = DISPATCH_METHOD;
    // Reading a property with arguments looks like a method call to JScript.
    static constexpr WORD kProperty = DISPATCH_PROPERTYGET | DISPATCH_METHOD;
    // In a row of its own: the new value is the argument.
    static constexpr WORD kAssignment = DISPATCH_PROPERTYPUT;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return DISP_E_BADINDEX; }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (names == nullptr || ids == nullptr) {
            return E_POINTER;
        }
        // Names after the first are those of parameters, and there are none.
        std::fill_n(ids, count, DISPID_UNKNOWN);
        for (const Member& member : Self::Members()) {
            if (count == 1 && _wcsicmp(member.name, names[0]) == 0) {
                ids[0] = member.id;
                return S_OK;
            }
        }
        return count == 0 ? S_OK : DISP_E_UNKNOWNNAME;
    }

    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT*) override {
        for (const Member& member : Self::Members()) {
            if (member.id == id && (member.kinds & flags) != 0) {
                return Guarded([&] { return Call(member, parameters, result, exception); });
            }
        }
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    HRESULT Call(const Member& member, DISPPARAMS* parameters, VARIANT* result,
                 EXCEPINFO* exception) {
        if (parameters == nullptr) {
            return E_POINTER;
        }
        // A new value comes as an argument with a name.
        if (parameters->cNamedArgs != (member.kinds == kAssignment ? 1 : 0)) {
            return DISP_E_NONAMEDARGS;
        }
        // The call may release the last reference that the script holds.
        ComPtr<IDispatch> self = AddReference<IDispatch>(this);
        Variant value;
        CallOutcome outcome =
            (static_cast<Self*>(this)->*member.call)(CallArguments(*parameters), value);
        if (FAILED(outcome.code)) {
            return Describe(member, outcome, exception);
        }
        if (result != nullptr) {
            *result = value.Release();
        }
        return S_OK;
    }

    static HRESULT Describe(const Member& member, const CallOutcome& outcome,
                            EXCEPINFO* exception) {
        if (exception == nullptr || outcome.description.empty()) {
            return outcome.code;
        }
        *exception = {};
        exception->scode = outcome.code;
        exception->bstrSource = MakeBstr(std::wstring(Self::kName) + L"." + member.name).Release();
        exception->bstrDescription = MakeBstr(outcome.description).Release();
        return DISP_E_EXCEPTION;
    }
};

} // namespace tervane::scripthost
