#include "tools/script_host/events/EventInterface.h"

#include <ocidl.h>

#include <memory>

namespace tervane::scripthost {
namespace {

using TypeInfo = ComPtr<ITypeInfo>;

// The attributes of a type, given back to it at the end.
auto AttributesOf(ITypeInfo* type) {
    auto giveBack = [type](TYPEATTR* attributes) { type->ReleaseTypeAttr(attributes); };
    TYPEATTR* attributes = nullptr;
    if (FAILED(type->GetTypeAttr(&attributes))) {
        attributes = nullptr;
    }
    return std::unique_ptr<TYPEATTR, decltype(giveBack)>(attributes, giveBack);
}

// The interface at `index` of a class, null unless it is a source dispinterface: the one named
// `wanted`, or else the one marked as default.
TypeInfo SourceAt(ITypeInfo* coclass, UINT index, const std::optional<IID>& wanted) {
    INT flags = 0;
    if (FAILED(coclass->GetImplTypeFlags(index, &flags)) || (flags & IMPLTYPEFLAG_FSOURCE) == 0) {
        return {};
    }
    HREFTYPE reference = 0;
    TypeInfo type;
    if (FAILED(coclass->GetRefTypeOfImplType(index, &reference)) ||
        FAILED(coclass->GetRefTypeInfo(reference, type.Put()))) {
        return {};
    }
    auto attributes = AttributesOf(type.Get());
    if (!attributes || attributes->typekind != TKIND_DISPATCH) {
        return {};
    }
    bool isWanted =
        wanted ? IsEqualIID(attributes->guid, *wanted) : (flags & IMPLTYPEFLAG_FDEFAULT) != 0;
    return isWanted ? std::move(type) : TypeInfo();
}

TypeInfo DefaultSourceOf(IUnknown* object) {
    ComPtr<IProvideClassInfo> provider = QueryFor<IProvideClassInfo>(object);
    TypeInfo coclass;
    if (!provider || FAILED(provider->GetClassInfo(coclass.Put())) || !coclass) {
        return {};
    }
    std::optional<IID> wanted;
    if (ComPtr<IProvideClassInfo2> namer = QueryFor<IProvideClassInfo2>(object)) {
        IID id{};
        if (SUCCEEDED(namer->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id))) {
            wanted = id;
        }
    }
    auto attributes = AttributesOf(coclass.Get());
    for (UINT i = 0; attributes && i < attributes->cImplTypes; ++i) {
        if (TypeInfo source = SourceAt(coclass.Get(), i, wanted)) {
            return source;
        }
    }
    return {};
}

std::map<DISPID, std::wstring> NamesOf(ITypeInfo* type, UINT functions) {
    std::map<DISPID, std::wstring> names;
    for (UINT i = 0; i < functions; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(type->GetFuncDesc(i, &function))) {
            continue;
        }
        DISPID id = function->memid;
        type->ReleaseFuncDesc(function);
        UniqueBstr name;
        UINT found = 0;
        if (SUCCEEDED(type->GetNames(id, name.Put(), 1, &found)) && found == 1) {
            names.emplace(id, TextOf(name.Get()));
        }
    }
    return names;
}

} // namespace

std::optional<EventInterface> EventInterface::Of(IUnknown* source) {
    TypeInfo type = DefaultSourceOf(source);
    if (!type) {
        return std::nullopt;
    }
    auto attributes = AttributesOf(type.Get());
    if (!attributes) {
        return std::nullopt;
    }
    return EventInterface(attributes->guid, NamesOf(type.Get(), attributes->cFuncs));
}

const std::wstring* EventInterface::NameOf(DISPID event) const noexcept {
    auto found = names_.find(event);
    return found == names_.end() ? nullptr : &found->second;
}

} // namespace tervane::scripthost
