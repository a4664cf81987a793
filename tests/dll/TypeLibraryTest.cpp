// The type library inside the built DLL is a contract with programs in the field: an identifier, a
// number, a name, a type or a default that differs breaks them. TERVANELib.txt says what they were
// promised; the whole library, read out in the same notation, must be that text.

#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <algorithm>
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

std::string NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    UniqueBstr name;
    info->GetDocumentation(member, name.Put(), nullptr, nullptr, nullptr);
    return Narrow(name);
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
        return target && NameOf(target.Get()) == "IDispatch" ? "object" : "pointer";
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
        const std::string name = NameOf(info, function->memid);
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
    EXPECT_EQ(attributes.cVars, 0) << NameOf(info);
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
        text += target ? NameOf(target.Get()) : "unreadable";
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
    const std::string start = NameOf(info) + " " + GuidText(attributes.guid) + " \"" +
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

// The lines of one that the other lacks, with their numbers.
std::string Difference(const std::string& text, const std::string& other) {
    std::istringstream lines(text);
    std::istringstream others(other);
    std::string found;
    std::string line;
    std::string counterpart;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (!std::getline(others, counterpart) || line != counterpart) {
            found += std::to_string(number) + ": " + line + "\n";
        }
    }
    return found;
}

class TypeLibraryTest : public testing::Test {
protected:
    TypeLibraryTest() {
        LoadTypeLibEx(TestComponent::Get().Path().c_str(), REGKIND_NONE, library_.Put());
    }
    void SetUp() override { ASSERT_TRUE(library_); }

    const Apartment apartment_;
    ComPtr<ITypeLib> library_;
};

TEST_F(TypeLibraryTest, IsWhatProgramsInTheFieldWerePromised) {
    std::ifstream file(TYPE_LIBRARY_TEXT);
    ASSERT_TRUE(file) << TYPE_LIBRARY_TEXT;
    std::ostringstream promised;
    promised << file.rdbuf();
    const std::string found = Describe(library_.Get());
    EXPECT_TRUE(found == promised.str()) << "found\n"
                                         << Difference(found, promised.str()) << "promised\n"
                                         << Difference(promised.str(), found);
}

// Records what a wait is asked for; the other members are not called.
class WaitRecorder final : public IWindowMgr {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitOnWindow(BSTR, BSTR, long, VARIANT_BOOL, long, long*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitForWindow(BSTR, BSTR, long, VARIANT_BOOL, long, long*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitForWindowToComeAndGo(BSTR topLevel, BSTR child, long interval,
                                                       VARIANT_BOOL invisible, long timeout,
                                                       VARIANT_BOOL appearanceOnly,
                                                       long* id) override {
        std::ostringstream text;
        text << Narrow(topLevel) << "," << Narrow(child) << "," << interval << "," << invisible
             << "," << timeout << "," << appearanceOnly;
        received = text.str();
        *id = 7;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetWindowState(BSTR, BSTR, long*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetWindowState(long, BSTR, BSTR, VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetMatchingWindowTitleText(BSTR, BSTR, BSTR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ClickButton(BSTR, BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetButtonCheckState(BSTR, BSTR, VARIANT_BOOL,
                                                  VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AbortWait(long, VARIANT_BOOL*) override { return E_NOTIMPL; }

    std::string received;
};

TEST_F(TypeLibraryTest, FillsInTheDefaultsThatACallOmits) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(library_->GetTypeInfoOfGuid(__uuidof(IWindowMgr), info.Put()), S_OK);
    WaitRecorder recorder;
    const auto call = [&](std::initializer_list<Argument> arguments) {
        std::vector<VARIANT> reversed(arguments.size());
        std::transform(arguments.begin(), arguments.end(), reversed.rbegin(),
                       [](const Argument& argument) { return argument.value.Get(); });
        DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        Variant result;
        EXPECT_EQ(info->Invoke(&recorder, 3, DISPATCH_METHOD, &parameters, result.Put(), nullptr,
                               nullptr),
                  S_OK);
        EXPECT_EQ(V_I4(&result.Get()), 7);
        return recorder.received;
    };
    EXPECT_EQ(call({L"Setup"}), "Setup,,200,-1,0,0");
    EXPECT_EQ(call({L"Setup", L"Next", 50, false}), "Setup,Next,50,0,0,0");
    // What a script leaves out between two commas.
    VARIANT omitted = {};
    V_VT(&omitted) = VT_ERROR;
    V_ERROR(&omitted) = DISP_E_PARAMNOTFOUND;
    EXPECT_EQ(call({L"Setup", L"Next", omitted, omitted, 3, true}), "Setup,Next,200,-1,3,-1");
}

} // namespace
} // namespace tervane::test
