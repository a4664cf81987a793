// The type library inside the built DLL is a contract with programs in the field: an identifier, a
// number, a name, a type or a default that differs breaks them. TERVANELib.txt says what they were
// promised; the whole library, read out in the same notation, must be that text.

#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

namespace tervane::test {
namespace {

std::wstring GuidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

std::wstring HelpOf(ITypeInfo* info, MEMBERID member) {
    UniqueBstr help;
    info->GetDocumentation(member, nullptr, help.Put(), nullptr, nullptr);
    return L" \"" + std::wstring(TextOf(help.Get())) + L"\"";
}

// Of a bit set, "in out" for instance; bits without a name show as their number.
std::wstring FlagNames(UINT flags, std::initializer_list<std::pair<UINT, const wchar_t*>> names) {
    std::wstring text;
    for (const auto& [flag, name] : names) {
        text += flags & flag ? std::wstring(L" ") + name : L"";
        flags &= ~flag;
    }
    return flags ? text + L" " + std::to_wstring(flags) : text;
}

// The types that these interfaces use; anything else shows as its number.
std::wstring TypeName(ITypeInfo* info, const TYPEDESC& type) {
    static const std::map<VARTYPE, const wchar_t*> names = {
        {VT_BSTR, L"BSTR"},       {VT_I4, L"long"},         {VT_I2, L"short"},
        {VT_BOOL, L"bool"},       {VT_VARIANT, L"VARIANT"}, {VT_UI2, L"unsigned short"},
        {VT_HRESULT, L"HRESULT"}, {VT_VOID, L"void"},       {VT_DISPATCH, L"IDispatch*"}};
    ComPtr<ITypeInfo> target;
    if (type.vt == VT_PTR) {
        return TypeName(info, *type.lptdesc) + L"*";
    }
    if (type.vt == VT_USERDEFINED && SUCCEEDED(info->GetRefTypeInfo(type.hreftype, target.Put()))) {
        return NameOf(target.Get());
    }
    const auto found = names.find(type.vt);
    return found == names.end() ? std::to_wstring(type.vt) : found->second;
}

// "number name kind @place in the virtual table: type name flags=default, ...; result"
std::wstring Describe(ITypeInfo* info, const FUNCDESC& function) {
    BSTR names[16] = {};
    UINT count = 0;
    info->GetNames(function.memid, names, 16, &count);
    std::wstring text = std::to_wstring(function.memid) + L" " + NameOf(info, function.memid) +
                        FlagNames(function.invkind, {{INVOKE_FUNC, L"call"},
                                                     {INVOKE_PROPERTYGET, L"get"},
                                                     {INVOKE_PROPERTYPUT, L"put"}}) +
                        L" @" + std::to_wstring(function.oVft / static_cast<SHORT>(sizeof(void*)));
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        text += (i == 0 ? L": " : L", ") + TypeName(info, parameter.tdesc) + L" " +
                std::wstring(TextOf(names[i + 1])) +
                FlagNames(flags & ~PARAMFLAG_FHASDEFAULT, {{PARAMFLAG_FIN, L"in"},
                                                           {PARAMFLAG_FOUT, L"out"},
                                                           {PARAMFLAG_FRETVAL, L"retval"},
                                                           {PARAMFLAG_FOPT, L"optional"}});
        if (flags & PARAMFLAG_FHASDEFAULT) {
            text += L"=\"" + Say(parameter.paramdesc.pparamdescex->varDefaultValue) + L"\"";
        }
    }
    for (BSTR name : names) {
        SysFreeString(name);
    }
    EXPECT_NE(L" \"\"", HelpOf(info, function.memid)) << text;
    return text + L"; " + TypeName(info, function.elemdescFunc.tdesc) + L"\n";
}

// What an entry is, its members, and what it is made of. Behind index -1 hides the virtual-table
// side of a dual interface; the dispatch side never shows OLE automation.
std::wstring Describe(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(info->GetTypeAttr(&attributes))) {
        return L"unreadable\n";
    }
    const bool isDual =
        attributes->typekind == TKIND_DISPATCH && attributes->wTypeFlags & TYPEFLAG_FDUAL;
    const UINT flags = attributes->wTypeFlags & ~(isDual ? TYPEFLAG_FOLEAUTOMATION : 0);
    std::wstring text = NameOf(info) + L" " + GuidText(attributes->guid) +
                        HelpOf(info, MEMBERID_NIL) + L" kind " +
                        std::to_wstring(attributes->typekind) +
                        FlagNames(flags, {{TYPEFLAG_FDUAL, L"dual"},
                                          {TYPEFLAG_FDISPATCHABLE, L"dispatchable"},
                                          {TYPEFLAG_FOLEAUTOMATION, L"oleautomation"},
                                          {TYPEFLAG_FCANCREATE, L"creatable"}}) +
                        L"\n";
    FUNCDESC* function = nullptr;
    for (UINT i = 0; !isDual && SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
        text += Describe(info, *function);
        info->ReleaseFuncDesc(function);
    }
    for (UINT i = isDual ? static_cast<UINT>(-1) : 0; i != attributes->cImplTypes; ++i) {
        HREFTYPE reference = 0;
        INT kind = 0;
        ComPtr<ITypeInfo> target;
        info->GetRefTypeOfImplType(i, &reference);
        info->GetRefTypeInfo(reference, target.Put());
        info->GetImplTypeFlags(i, &kind);
        text += i == static_cast<UINT>(-1)
                    ? Describe(target.Get())
                    : L"of " + NameOf(target.Get()) +
                          FlagNames(static_cast<UINT>(kind), {{IMPLTYPEFLAG_FDEFAULT, L"default"},
                                                              {IMPLTYPEFLAG_FSOURCE, L"source"}}) +
                          L"\n";
    }
    EXPECT_EQ(0, attributes->cVars) << text;
    info->ReleaseTypeAttr(attributes);
    return text;
}

std::wstring Describe(ITypeLib* library) {
    TLIBATTR* attributes = nullptr;
    if (FAILED(library->GetLibAttr(&attributes))) {
        return L"unreadable";
    }
    EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
    UniqueBstr name, help;
    library->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr);
    std::wostringstream text;
    text << TextOf(name.Get()) << L' ' << GuidText(attributes->guid) << L" \"" << TextOf(help.Get())
         << L"\" version " << attributes->wMajorVerNum << L'.' << attributes->wMinorVerNum
         << L" locale " << attributes->lcid << L'\n';
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        library->GetTypeInfo(i, info.Put());
        text << L'\n' << Describe(info.Get());
    }
    return text.str();
}

TEST(TypeLibraryTest, IsWhatProgramsInTheFieldWerePromised) {
    const Apartment apartment;
    ComPtr<ITypeLib> library;
    ASSERT_EQ(S_OK,
              LoadTypeLibEx(TestComponent::Get().Path().c_str(), REGKIND_NONE, library.Put()));
    std::ifstream file(TYPE_LIBRARY_TEXT);
    ASSERT_TRUE(file) << TYPE_LIBRARY_TEXT;
    std::ostringstream promised;
    promised << file.rdbuf();
    const std::wstring found = Describe(library.Get());
    EXPECT_EQ(promised.str(), std::string(found.begin(), found.end())); // shows where they differ
}

} // namespace
} // namespace tervane::test
