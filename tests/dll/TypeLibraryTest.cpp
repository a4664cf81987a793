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

std::string Narrow(const wchar_t* text) {
    return text ? std::string(text, text + wcslen(text)) : std::string();
}

std::string Narrow(const UniqueBstr& text) {
    return Narrow(text.Get());
}

std::string GuidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return Narrow(text);
}

std::string NarrowName(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    return Narrow(NameOf(info, member).c_str());
}

std::string HelpOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    UniqueBstr help;
    info->GetDocumentation(member, nullptr, help.Put(), nullptr, nullptr);
    return Narrow(help);
}

TYPEATTR AttributesOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    TYPEATTR copy = {};
    if (SUCCEEDED(info->GetTypeAttr(&attributes))) {
        copy = *attributes;
        info->ReleaseTypeAttr(attributes);
    }
    return copy;
}

// The types that these interfaces use; anything else shows as its number.
std::string TypeName(ITypeInfo* info, const TYPEDESC& type) {
    static const std::map<VARTYPE, const char*> names = {
        {VT_BSTR, "BSTR"},       {VT_I4, "long"},         {VT_I2, "short"},
        {VT_BOOL, "bool"},       {VT_VARIANT, "VARIANT"}, {VT_UI2, "unsigned short"},
        {VT_DISPATCH, "object"},
    };
    if (type.vt == VT_PTR && type.lptdesc->vt == VT_USERDEFINED) {
        ComPtr<ITypeInfo> target;
        info->GetRefTypeInfo(type.lptdesc->hreftype, target.Put());
        return target && NarrowName(target.Get()) == "IDispatch" ? "object" : "pointer";
    }
    const auto found = names.find(type.vt);
    return found == names.end() ? "vt" + std::to_string(type.vt) : found->second;
}

std::string DefaultOf(const ELEMDESC& parameter) {
    const VARIANT& value = parameter.paramdesc.pparamdescex->varDefaultValue;
    // A value of another type would reach the method unconverted.
    if (V_VT(&value) != parameter.tdesc.vt) {
        return "=vt" + std::to_string(V_VT(&value));
    }
    switch (V_VT(&value)) {
    case VT_BSTR:
        return "=\"" + Narrow(V_BSTR(&value)) + "\"";
    case VT_BOOL:
        return "=" + std::to_string(static_cast<unsigned short>(V_BOOL(&value)));
    default:
        return "=" + std::to_string(V_I4(&value));
    }
}

// "(type name=default, ...) -> type name"
std::string Signature(ITypeInfo* info, const FUNCDESC& function) {
    BSTR names[16] = {};
    UINT count = 0;
    info->GetNames(function.memid, names, 16, &count);
    std::string parameters;
    std::string result;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        const std::string name = " " + Narrow(names[i + 1]);
        if ((flags & PARAMFLAG_FRETVAL) && (flags & PARAMFLAG_FOUT)) {
            result = " -> " + TypeName(info, *parameter.tdesc.lptdesc) + name;
        } else {
            parameters += parameters.empty() ? "" : ", ";
            parameters += (flags & PARAMFLAG_FIN) && !(flags & PARAMFLAG_FOUT) ? "" : "[not in] ";
            parameters += TypeName(info, parameter.tdesc) + name;
            parameters += flags & PARAMFLAG_FHASDEFAULT ? DefaultOf(parameter) : "";
        }
    }
    for (BSTR name : names) {
        SysFreeString(name);
    }
    return "(" + parameters + ")" + result;
}

// The one value of a property's get or put.
std::string PropertyType(ITypeInfo* info, const FUNCDESC& function) {
    if (function.cParams != 1) {
        return std::to_string(function.cParams) + " parameters";
    }
    const TYPEDESC& type = function.lprgelemdescParam[0].tdesc;
    const bool get = function.invkind == INVOKE_PROPERTYGET;
    if (get && type.vt != VT_PTR) {
        return "no result";
    }
    return TypeName(info, get ? *type.lptdesc : type);
}

// One line per member, in the order of the virtual table:
//   number name r|w|rw type                            a property
//   number name(type name=default, ...) -> type name   a method or event
// Every member must have a help text, and those of a virtual table must lie one after the other
// behind IDispatch's seven.
std::string MembersOf(ITypeInfo* info, bool virtualTable) {
    std::string lines;
    const TYPEATTR attributes = AttributesOf(info);
    for (UINT i = 0; i < attributes.cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info->GetFuncDesc(i, &function))) {
            return "unreadable";
        }
        const std::string name = NarrowName(info, function->memid);
        const std::string start = std::to_string(function->memid) + " " + name;
        if (function->invkind == INVOKE_FUNC) {
            lines += start + Signature(info, *function) + "\n";
        } else {
            const bool get = function->invkind == INVOKE_PROPERTYGET;
            const std::string type = " " + PropertyType(info, *function) + "\n";
            const bool pair = !get && lines.ends_with(start + " r" + type);
            if (pair) {
                lines.resize(lines.size() - (start + " r" + type).size());
            }
            lines += start + (pair ? " rw" : get ? " r" : " w") + type;
        }
        EXPECT_NE(HelpOf(info, function->memid), "") << name;
        if (virtualTable) {
            EXPECT_EQ(function->oVft, static_cast<SHORT>((7 + i) * sizeof(void*))) << name;
        }
        info->ReleaseFuncDesc(function);
    }
    EXPECT_EQ(attributes.cVars, 0) << NarrowName(info);
    return lines;
}

std::string ImplementedBy(ITypeInfo* info) {
    std::string text;
    const TYPEATTR attributes = AttributesOf(info);
    for (UINT i = 0; i < attributes.cImplTypes; ++i) {
        HREFTYPE reference = 0;
        INT flags = 0;
        ComPtr<ITypeInfo> target;
        info->GetRefTypeOfImplType(i, &reference);
        info->GetRefTypeInfo(reference, target.Put());
        info->GetImplTypeFlags(i, &flags);
        text += text.empty() ? "" : " ";
        text += flags & IMPLTYPEFLAG_FSOURCE ? "s" : "";
        text += flags & IMPLTYPEFLAG_FDEFAULT ? "*" : "";
        text += target ? NarrowName(target.Get()) : "unreadable";
    }
    return text;
}

// Flags that no entry here should have show as their number.
std::string FlagNames(WORD flags) {
    std::string text;
    for (const auto& [flag, name] : {std::pair<WORD, const char*>{TYPEFLAG_FDUAL, " dual"},
                                     {TYPEFLAG_FDISPATCHABLE, " dispatchable"},
                                     {TYPEFLAG_FOLEAUTOMATION, " oleautomation"},
                                     {TYPEFLAG_FCANCREATE, " creatable"}}) {
        text += flags & flag ? name : "";
        flags &= ~flag;
    }
    return flags ? text + " " + std::to_string(flags) : text;
}

// What an entry is, which interfaces it has ('s' marks the source one, '*' the default ones), and
// its members. The virtual-table side of a dual interface hides behind index -1; the dispatch side
// never shows OLE automation.
std::string Describe(ITypeInfo* info) {
    const TYPEATTR attributes = AttributesOf(info);
    const WORD flags = attributes.wTypeFlags & ~TYPEFLAG_FOLEAUTOMATION;
    const std::string start = NarrowName(info) + " " + GuidText(attributes.guid) + " \"" +
                              HelpOf(info) + "\"" + FlagNames(flags);
    if (attributes.typekind == TKIND_COCLASS) {
        return start + ": " + ImplementedBy(info) + "\n";
    }
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> table;
    if (attributes.typekind != TKIND_DISPATCH || !(flags & TYPEFLAG_FDUAL) ||
        FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
        FAILED(info->GetRefTypeInfo(reference, table.Put()))) {
        return start + " kind " + std::to_string(attributes.typekind) + "\n" +
               MembersOf(info, false);
    }
    return start + ", table of " + ImplementedBy(table.Get()) +
           FlagNames(AttributesOf(table.Get()).wTypeFlags) + "\n" + MembersOf(table.Get(), true);
}

std::string Describe(ITypeLib* library) {
    TLIBATTR* attributes = nullptr;
    if (FAILED(library->GetLibAttr(&attributes))) {
        return "unreadable";
    }
    EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
    UniqueBstr name;
    UniqueBstr help;
    library->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr);
    std::ostringstream text;
    text << Narrow(name) << ' ' << GuidText(attributes->guid) << " \"" << Narrow(help)
         << "\" version " << attributes->wMajorVerNum << '.' << attributes->wMinorVerNum
         << " locale " << attributes->lcid << '\n';
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        library->GetTypeInfo(i, info.Put());
        text << '\n' << Describe(info.Get());
    }
    return text.str();
}

// The lines of one that the other lacks.
std::string Difference(const std::string& text, const std::string& other) {
    std::istringstream lines(text);
    std::string found;
    for (std::string line; std::getline(lines, line);) {
        found += ("\n" + other).find("\n" + line + "\n") == std::string::npos ? line + "\n" : "";
    }
    return found;
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
    const std::string found = Describe(library.Get());
    EXPECT_TRUE(found == promised.str()) << "found\n"
                                         << Difference(found, promised.str()) << "promised\n"
                                         << Difference(promised.str(), found);
}

} // namespace
} // namespace tervane::test
