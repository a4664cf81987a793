// Every member of every class that returns something, called as compiled clients can: without a
// place for the result.

#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

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

std::wstring NameOf(ITypeInfo* info, MEMBERID member) {
    UniqueBstr name;
    info->GetDocumentation(member, name.Put(), nullptr, nullptr, nullptr);
    return std::wstring(TextOf(name.Get()));
}

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

TEST(NullPlaces, AreRefusedByEveryMember) {
    const Apartment apartment;
    ComPtr<ITypeLib> library;
    ASSERT_EQ(S_OK,
              LoadTypeLibEx(TestComponent::Get().Path().c_str(), REGKIND_NONE, library.Put()));
    int members = 0;
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info, interfaceInfo, table;
        library->GetTypeInfo(i, info.Put());
        TYPEATTR* attributes = nullptr;
        info->GetTypeAttr(&attributes);
        const TYPEATTR coclass = *attributes;
        info->ReleaseTypeAttr(attributes);
        for (UINT n = 0; coclass.typekind == TKIND_COCLASS && n < coclass.cImplTypes; ++n) {
            HREFTYPE reference = 0;
            INT flags = 0;
            info->GetImplTypeFlags(n, &flags);
            info->GetRefTypeOfImplType(n, &reference);
            interfaceInfo.Reset(nullptr);
            table.Reset(nullptr);
            info->GetRefTypeInfo(reference, interfaceInfo.Put());
            if ((flags & IMPLTYPEFLAG_FSOURCE) ||
                FAILED(interfaceInfo->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
                FAILED(interfaceInfo->GetRefTypeInfo(reference, table.Put()))) {
                continue;
            }
            table->GetTypeAttr(&attributes);
            const ComPtr<IDispatch> object = TestComponent::Get().Create(coclass.guid);
            ComPtr<IUnknown> side;
            EXPECT_EQ(S_OK, object->QueryInterface(attributes->guid,
                                                   reinterpret_cast<void**>(side.Put())));
            const std::wstring name = NameOf(table.Get(), MEMBERID_NIL);
            for (UINT f = 0; f < attributes->cFuncs; ++f) {
                FUNCDESC* function = nullptr;
                table->GetFuncDesc(f, &function);
                const SHORT last = function->cParams - 1;
                if (last >= 0 &&
                    function->lprgelemdescParam[last].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
                    const std::wstring member = NameOf(table.Get(), function->memid);
                    const bool unmoved =
                        kUnmoved.count({name, L""}) || kUnmoved.count({name, member});
                    EXPECT_EQ(unmoved ? S_FALSE : E_POINTER,
                              CallWithoutPlace(side.Get(), *function))
                        << testing::PrintToString(name) << "." << testing::PrintToString(member);
                    ++members;
                }
                table->ReleaseFuncDesc(function);
            }
            table->ReleaseTypeAttr(attributes);
        }
    }
    EXPECT_GT(members, 200);
}

} // namespace
} // namespace tervane::test
