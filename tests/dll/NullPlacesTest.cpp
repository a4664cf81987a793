// Every member of every class that returns something, called as compiled clients can: without a
// place for the result.

#include "support/Classes.h"
#include "support/ObjectTest.h"

#include <set>

namespace tervane::test {
namespace {

// Deliberately no error here; the empty name stands for all members.
const std::set<std::pair<std::wstring, std::wstring>> kUnmoved = {
    {L"IEmailData", L""},
    {L"IPopCtl", L"LastError"},
    {L"IRegistry2", L"GetValue"},
    {L"IDHCPConfiguration", L"IsRebootNeeded"},
    {L"IDHCPConfiguration", L"LastError"},
    {L"IDHCPConfiguration", L"LastErrorCode"}};

// Zeroes of the declared types, and null for the result.
HRESULT CallWithoutPlace(IUnknown* object, const FUNCDESC& function) {
    std::vector<VARIANT> values(static_cast<size_t>(function.cParams));
    std::vector<VARTYPE> types;
    std::vector<VARIANTARG*> places;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const VARTYPE type = function.lprgelemdescParam[i].tdesc.vt;
        types.push_back(type == VT_PTR ? static_cast<VARTYPE>(sizeof(void*) == 8 ? VT_I8 : VT_I4)
                                       : type);
        values[i].vt = type == VT_VARIANT ? static_cast<VARTYPE>(VT_EMPTY) : types.back();
        places.push_back(&values[i]);
    }
    VARIANT result = {};
    const HRESULT called =
        DispCallFunc(object, static_cast<ULONG_PTR>(function.oVft), CC_STDCALL, VT_I4,
                     static_cast<UINT>(function.cParams), types.data(), places.data(), &result);
    return FAILED(called) ? called : result.lVal;
}

ComPtr<ITypeInfo> CoclassOf(IUnknown* object) {
    ComPtr<ITypeInfo> coclass;
    QueryFor<IProvideClassInfo>(object)->GetClassInfo(coclass.Put());
    return coclass;
}

// What the interface's own description, with the virtual table, lists.
int CallAll(IUnknown* object, ITypeInfo* table) {
    int members = 0;
    const std::wstring name = NameOf(table);
    FUNCDESC* function = nullptr;
    for (UINT f = 0; SUCCEEDED(table->GetFuncDesc(f, &function)); ++f) {
        const SHORT last = function->cParams - 1;
        if (last >= 0 &&
            function->lprgelemdescParam[last].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
            const std::wstring member = NameOf(table, function->memid);
            const bool unmoved = kUnmoved.count({name, L""}) || kUnmoved.count({name, member});
            EXPECT_EQ(unmoved ? S_FALSE : E_POINTER, CallWithoutPlace(object, *function))
                << testing::PrintToString(name) << "." << testing::PrintToString(member);
            ++members;
        }
        table->ReleaseFuncDesc(function);
    }
    return members;
}

TEST(NullPlaces, AreRefusedByEveryMember) {
    const Apartment apartment;
    int members = 0;
    for (const ClassFacts& facts : kClasses) {
        const auto object = New(facts.name);
        const auto coclass = CoclassOf(object.Get());
        HREFTYPE reference = 0;
        for (UINT n = 0; SUCCEEDED(coclass->GetRefTypeOfImplType(n, &reference)); ++n) {
            ComPtr<ITypeInfo> info, table;
            ComPtr<IUnknown> side;
            coclass->GetRefTypeInfo(reference, info.Put());
            if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
                FAILED(info->GetRefTypeInfo(reference, table.Put()))) {
                continue; // events
            }
            TYPEATTR* attributes = nullptr;
            table->GetTypeAttr(&attributes);
            EXPECT_EQ(S_OK, object->QueryInterface(attributes->guid,
                                                   reinterpret_cast<void**>(side.Put())));
            table->ReleaseTypeAttr(attributes);
            members += CallAll(side.Get(), table.Get());
        }
    }
    EXPECT_GT(members, 200);
}

} // namespace
} // namespace tervane::test
