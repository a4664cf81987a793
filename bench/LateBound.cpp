#include "bench/LateBound.h"

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace bench {

void Fail(std::string_view what, HRESULT result) {
    std::printf("%.*s failed: 0x%08lX\n", static_cast<int>(what.size()), what.data(),
                static_cast<unsigned long>(result));
    std::fflush(stdout);
    std::_Exit(1);
}

tervane::Variant Text(std::wstring_view text) {
    auto value = tervane::Variant::FromText(text);
    if (!value) {
        Fail("copying a text", E_OUTOFMEMORY);
    }
    return std::move(*value);
}

LateBound::LateBound(const wchar_t* progId) {
    CLSID classId;
    HRESULT result = CLSIDFromProgID(progId, &classId);
    if (SUCCEEDED(result)) {
        result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                  reinterpret_cast<void**>(object_.Put()));
    }
    if (FAILED(result)) {
        Fail("creating an object", result);
    }
}

DISPID LateBound::NumberOf(const wchar_t* member) const {
    DISPID id = DISPID_UNKNOWN;
    auto* name = const_cast<wchar_t*>(member);
    HRESULT result = object_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(result)) {
        Fail("looking up a member", result);
    }
    return id;
}

tervane::Variant LateBound::Get(DISPID property) const {
    DISPPARAMS none = {};
    return Invoke(property, DISPATCH_PROPERTYGET, none);
}

void LateBound::Set(const wchar_t* property, const tervane::Variant& value) const {
    VARIANT argument = value.Get();
    DISPID name = DISPID_PROPERTYPUT;
    DISPPARAMS arguments = {&argument, &name, 1, 1};
    Invoke(NumberOf(property), DISPATCH_PROPERTYPUT, arguments);
}

tervane::Variant LateBound::AsValue() const {
    return tervane::Variant::FromObject(tervane::AddReference(object_.Get()));
}

tervane::Variant LateBound::Call(const wchar_t* method,
                                 std::initializer_list<const tervane::Variant*> arguments) const {
    // IDispatch takes arguments from the last to the first; they stay the caller's.
    std::vector<VARIANT> reversed;
    for (auto argument = arguments.end(); argument != arguments.begin();) {
        reversed.push_back((*--argument)->Get());
    }
    DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    return Invoke(NumberOf(method), DISPATCH_METHOD, parameters);
}

tervane::Variant LateBound::Invoke(DISPID member, WORD kind, DISPPARAMS& arguments) const {
    tervane::Variant answer;
    HRESULT result = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &arguments,
                                     answer.Put(), nullptr, nullptr);
    if (FAILED(result)) {
        Fail("invoking a member", result);
    }
    return answer;
}

} // namespace bench
