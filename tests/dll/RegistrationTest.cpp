// What registration leaves in the registry, to the last value, and what unregistering takes away
// again. Scripts in the field were written against this layout, oddities included.

#include "platform/registry/RegistryKey.h"
#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tervane::test {
namespace {

constexpr const wchar_t* kLibrary = L"{BAC0FBE8-26E0-43D5-8E83-CB15EFB9BC14}";
constexpr const wchar_t* kSystemInfoLibrary = L"{E3145E41-D873-4D34-BC9E-32C2B15435A8}";
constexpr const wchar_t* kMailLibrary = L"{CA668F19-CC4D-42BE-95AB-DD457330CEA0}";

struct ScriptCase {
    const wchar_t* vendor;
    const wchar_t* name;
    const wchar_t* clsid;
    const wchar_t* threading;
    const wchar_t* bitmap;         // null: no control
    const wchar_t* currentVersion; // null: none is written
    const wchar_t* library;        // null: none is written
    bool programmable;
};

const ScriptCase kScripts[] = {
    {L"Tervane", L"ConfigureOutlookExpress", L"{7DCAB9D6-19E5-4190-A3FE-0F252EC2FCEA}",
     L"Apartment", nullptr, L"Tervane.ConfigureOutlookExpress.1", kLibrary, true},
    {L"Ostrel", L"GeneralSysInfo", L"{34ECB075-144C-48A7-9AD2-8760231379CE}", L"Apartment", L"101",
     L"Ostrel.GeneralSysInfo.1", kSystemInfoLibrary, true},
    {L"Pellow", L"SmtpCtl", L"{30D0EC5D-3C0D-4848-BD68-D568AC3F41E6}", L"Apartment", L"103",
     L"Pellow.SmtpCtl.1", kMailLibrary, true},
    {L"Pellow", L"PopCtl", L"{E3F3046E-7E42-47B3-A498-7B09004897E3}", L"Apartment", L"105",
     L"Pellow.PopCtl.1", kMailLibrary, true},
    {L"Pellow", L"EmailData", L"{D256B2D9-9C58-445A-8C38-C3AAA84EF137}", L"Apartment", L"107",
     L"Pellow.EmailData.1", kMailLibrary, true},
    {L"Tervane", L"ConnectivityTester", L"{EFD3EA56-234D-4240-90EA-CC9FA3AF5A01}", L"Apartment",
     nullptr, L"Tervane.ConnectivityTester.1", kLibrary, true},
    {L"Tervane", L"DHCP", L"{780F8ADC-3150-4953-853A-975F80BCAF0A}", L"Apartment", nullptr,
     L"Tervane.DHCP.1", kLibrary, true},
    {L"Tervane", L"ConfigureIE", L"{BF0FF49A-8C0D-4ECE-B5C4-0BE00BED72DA}", L"Apartment", L"110",
     L"Tervane.ConfigureIE.1", kLibrary, true},
    {L"Tervane", L"StaticAdapterInfo", L"{535393C8-DCDA-4155-BEA2-D621C76FE903}", L"Apartment",
     L"112", L"Tervane.StaticAdapterInfo.1", kLibrary, true},
    {L"Tervane", L"LiveAdapterInfo", L"{81755D8F-D9C1-42C7-887E-B7B3FBDBACEA}", L"Apartment",
     L"114", L"Tervane.LiveAdapterInfo.1", kLibrary, true},
    {L"Tervane", L"DriveInfo", L"{5EAC3C01-174B-4BB8-B367-7097CE61C541}", L"Apartment", L"116",
     L"Tervane.DriveInfo.1", kLibrary, true},
    {L"Tervane", L"PhoneBookEntry", L"{6F0D9E95-38DE-42C9-99FD-0A6D05CA5AAB}", L"both", nullptr,
     nullptr, nullptr, false},
    {L"Tervane", L"RASMgr", L"{4B12229A-1343-4A35-A958-E99B1B02F63B}", L"both", nullptr, nullptr,
     nullptr, false},
    {L"Tervane", L"DHCPConfiguration", L"{23B1D1AE-A29F-4AE2-B76E-CAB6E14811C4}", L"Apartment",
     nullptr, L"Tervane.IDHCPConfiguration.1", kLibrary, true},
    {L"Tervane", L"WindowMgr", L"{517431a3-30da-4ee1-b2b4-cf32b89eb911}", L"both", nullptr, nullptr,
     kLibrary, true},
    {L"Tervane", L"DisableFileAndPrintSharing", L"{1fc26549-af52-4742-9e93-1c5e22990d1e}",
     L"Apartment", nullptr, L"Tervane.DisableFileAndPrintSharing.1", kLibrary, true},
    {L"Tervane", L"Registry2", L"{e8bb94cb-7c06-445d-8dbc-6e4ccac1f905}", L"Apartment", nullptr,
     L"Tervane.Registry2.1", kLibrary, true},
    {L"Tervane", L"AdapterInfo", L"{845ee5f2-4a22-4ad6-a838-6ff4b759608c}", L"Apartment", L"110",
     L"Tervane.AdapterInfo.1", kLibrary, true},
};

// Key or "key:value" -> text. Keys without a default value map to the empty text.
using Tree = std::map<std::wstring, std::wstring>;

void Collect(const RegistryKey& key, const std::wstring& path, Tree& tree) {
    tree[path] = key.ReadText(L"").value_or(L"");
    for (const std::wstring& name : key.ValueNames()) {
        if (!name.empty()) {
            tree[path + L":" + name] = key.ReadText(name).value_or(L"(no text)");
        }
    }
    for (const std::wstring& name : key.SubKeyNames()) {
        Collect(key.OpenSubKey(name), path + L"\\" + name, tree);
    }
}

Tree Registered(const ScriptCase& script) {
    Tree tree;
    const std::wstring progId = std::wstring(script.vendor) + L"." + script.name;
    for (const std::wstring& path :
         {progId + L".1", progId, L"CLSID\\" + std::wstring(script.clsid)}) {
        if (const auto key = RegistryKey::Open(RegistryHive::kClassesRoot, path); key.IsOpen()) {
            Collect(key, path, tree);
        }
    }
    return tree;
}

Tree Expected(const ScriptCase& script, const std::wstring& module) {
    const std::wstring description = std::wstring(script.name) + L" Class";
    const std::wstring progId = std::wstring(script.vendor) + L"." + script.name;
    const std::wstring key = L"CLSID\\" + std::wstring(script.clsid);
    Tree tree = {
        {progId + L".1", description},
        {progId + L".1\\CLSID", script.clsid},
        {progId, description},
        {progId + L"\\CLSID", script.clsid},
        {key, description},
        {key + L"\\ProgID", progId + L".1"},
        {key + L"\\VersionIndependentProgID", progId},
        {key + L"\\InprocServer32", module},
        {key + L"\\InprocServer32:ThreadingModel", script.threading},
    };
    if (script.currentVersion) {
        tree[progId + L"\\CurVer"] = script.currentVersion;
    }
    if (script.programmable) {
        tree[key + L"\\Programmable"] = L"";
    }
    if (script.library) {
        tree[key + L"\\TypeLib"] = script.library;
    }
    if (script.bitmap) {
        tree[key + L"\\Control"] = L"";
        tree[key + L"\\Insertable"] = L"";
        tree[key + L"\\ToolboxBitmap32"] = module + L", " + script.bitmap;
        tree[key + L"\\MiscStatus"] = L"0";
        tree[key + L"\\MiscStatus\\1"] = L"132497";
        tree[key + L"\\Version"] = L"1.0";
    }
    return tree;
}

constexpr bool k64Bit = sizeof(void*) == 8;

std::wstring TypeLibraryKey(bool is64Bit) {
    return L"TypeLib\\" + std::wstring(kLibrary) + L"\\1.0\\0\\" + (is64Bit ? L"win64" : L"win32");
}

std::wstring TypeLibraryPath(bool is64Bit = k64Bit) {
    return RegistryKey::Open(RegistryHive::kClassesRoot, TypeLibraryKey(is64Bit))
        .ReadText(L"")
        .value_or(L"");
}

// The library that describes an interface to the system; empty when the interface is not known.
std::wstring LibraryOfInterfaces() {
    return RegistryKey::Open(RegistryHive::kClassesRoot,
                             L"Interface\\{A061A23D-0E7A-435A-9737-A9C76A5725EE}\\TypeLib")
        .ReadText(L"")
        .value_or(L"");
}

// A copy of the DLL in a folder of its own, loaded for the time of a test.
class CopiedModule {
public:
    explicit CopiedModule(const wchar_t* folder) {
        wchar_t temp[MAX_PATH];
        GetTempPathW(MAX_PATH, temp);
        folder_ = std::wstring(temp) + folder;
        CreateDirectoryW(folder_.c_str(), nullptr);
        path_ = folder_ + L"\\Tervane.DLL";
        CopyFileW(TestComponent::Get().Path().c_str(), path_.c_str(), FALSE);
        Load();
    }
    ~CopiedModule() {
        module_.Reset();
        DeleteFileW(path_.c_str());
        RemoveDirectoryW(folder_.c_str());
    }

    HRESULT Run(const char* name) const {
        const auto function = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
            reinterpret_cast<void*>(GetProcAddress(module_.Get(), name)));
        return function ? function() : E_FAIL;
    }
    void Unload() { module_.Reset(); }
    void Load() { module_.Reset(LoadLibraryW(path_.c_str())); }
    HRESULT Register() const { return Run("DllRegisterServer"); }
    HRESULT Unregister() const { return Run("DllUnregisterServer"); }
    const std::wstring& Path() const { return path_; }
    std::wstring ShortPath() const {
        wchar_t path[MAX_PATH];
        return std::wstring(path, GetShortPathNameW(path_.c_str(), path, MAX_PATH));
    }

private:
    std::wstring folder_;
    std::wstring path_;
    ZelBase::UniqueLibrary module_;
};

TEST(Registration, WritesEveryClassAndTheTypeLibraryAndTakesThemAway) {
    const Apartment apartment;
    const CopiedModule module(L"it's a long folder name");
    ASSERT_EQ(S_OK, module.Register());
    ASSERT_EQ(S_OK, module.Register()) << "registering again";
    // The registered path is the short form, in which the apostrophe stays.
    ASSERT_NE(module.Path(), module.ShortPath());
    ASSERT_NE(std::wstring::npos, module.ShortPath().find(L'\''));
    for (const ScriptCase& script : kScripts) {
        EXPECT_EQ(Expected(script, module.ShortPath()), Registered(script)) << script.name;
    }
    std::wstring library = TypeLibraryPath();
    EXPECT_EQ(0, lstrcmpiW(module.Path().c_str(), library.c_str()));

    CLSID clsid = {};
    ASSERT_EQ(S_OK, CLSIDFromProgID(L"Tervane.Registry2", &clsid));
    ComPtr<IDispatch> object;
    EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                     reinterpret_cast<void**>(object.Put())));
    object.Reset();

    ASSERT_EQ(S_OK, module.Unregister());
    for (const ScriptCase& script : kScripts) {
        EXPECT_EQ(Tree(), Registered(script)) << script.name;
    }
    EXPECT_EQ(L"", TypeLibraryPath());
    EXPECT_TRUE(RegistryKey::Open(RegistryHive::kClassesRoot, L"CLSID").HasSubKeys());
    EXPECT_EQ(S_OK, module.Unregister()) << "unregistering again";
    CoFreeUnusedLibraries();
}

// An older layout's leftovers below a class's key do not survive.
TEST(Registration, ReplacesWhatStoodInTheClassKey) {
    const Apartment apartment;
    const CopiedModule module(L"plain");
    const std::wstring key = L"CLSID\\" + std::wstring(kScripts[14].clsid);
    RegistryKey::Create(RegistryHive::kClassesRoot, key + L"\\LocalServer32")
        .WriteText(L"", L"old.exe");
    ASSERT_EQ(S_OK, module.Register());
    EXPECT_EQ(Expected(kScripts[14], module.ShortPath()), Registered(kScripts[14]));
    EXPECT_EQ(S_OK, module.Unregister());
}

// Georgian is in no code page but those that spell everything.
TEST(Registration, WritesNothingForAPathThatTheCodePageCannotSpell) {
    if (GetACP() == CP_UTF8) {
        GTEST_SKIP() << "this machine's code page spells everything";
    }
    const Apartment apartment;
    const CopiedModule module(L"\u10D0\u10D1\u10D2");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION), module.Register());
    EXPECT_EQ(Tree(), Registered(kScripts[0]));
    EXPECT_EQ(L"", TypeLibraryPath());
    EXPECT_EQ(S_OK, module.Unregister()) << "an earlier version may have registered it";
}

// The seventh script fails in its second key, since nothing lasting may stand below a key that goes
// with the system's session.
TEST(Registration, LeavesNoHalfOfAClassThatCannotBeRegistered) {
    const Apartment apartment;
    const CopiedModule module(L"plain");
    constexpr wchar_t kVolatile[] = L"Tervane.DHCP";
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_CLASSES_ROOT, kVolatile, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr));
    RegCloseKey(key);
    EXPECT_TRUE(FAILED(module.Register()));
    EXPECT_EQ(Expected(kScripts[5], module.ShortPath()), Registered(kScripts[5]));
    EXPECT_EQ(Tree(), Registered(kScripts[6]));
    EXPECT_EQ(Tree(), Registered(kScripts[7]));
    EXPECT_EQ(L"", TypeLibraryPath());
    EXPECT_EQ(S_OK, module.Unregister());
    EXPECT_EQ(Tree(), Registered(kScripts[5]));
}

TEST(Registration, LeavesTheTypeLibraryOfOthersAlone) {
    const Apartment apartment;
    const CopiedModule old(L"old");
    const CopiedModule newer(L"newer");
    ASSERT_EQ(S_OK, old.Register());
    ASSERT_EQ(S_OK, newer.Register());
    EXPECT_EQ(S_OK, old.Unregister());
    EXPECT_EQ(0, lstrcmpiW(newer.Path().c_str(), TypeLibraryPath().c_str()));
    EXPECT_EQ(kLibrary, LibraryOfInterfaces());

    // The other architecture's, as its own library would write it.
    RegistryKey::Create(RegistryHive::kClassesRoot, TypeLibraryKey(!k64Bit))
        .WriteText(L"", old.Path());
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(S_OK, newer.Unregister());
        EXPECT_EQ(L"", TypeLibraryPath());
        EXPECT_EQ(old.Path(), TypeLibraryPath(!k64Bit));
        EXPECT_EQ(kLibrary, LibraryOfInterfaces());
    }
    RegistryKey::Delete(RegistryHive::kClassesRoot, TypeLibraryKey(!k64Bit));
    ASSERT_EQ(S_OK, newer.Register());
    EXPECT_EQ(S_OK, newer.Unregister());
    EXPECT_EQ(L"", LibraryOfInterfaces());
}

// COM unloads what says that it can be unloaded, whoever holds a class factory of it.
TEST(Registration, AHeldClassFactoryHoldsTheLibrary) {
    const Apartment apartment;
    CopiedModule module(L"plain");
    ASSERT_EQ(S_OK, module.Register());
    module.Unload();
    {
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(S_OK,
                  CoGetClassObject(__uuidof(Registry2), CLSCTX_INPROC_SERVER, nullptr,
                                   IID_IClassFactory, reinterpret_cast<void**>(factory.Put())));
        CoFreeUnusedLibraries();
        ComPtr<IDispatch> object;
        EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IDispatch,
                                                reinterpret_cast<void**>(object.Put())));
    }
    CoFreeUnusedLibraries();
    EXPECT_EQ(nullptr, GetModuleHandleW(module.ShortPath().c_str()));
    module.Load();
    EXPECT_EQ(S_OK, module.Unregister());
}

} // namespace
} // namespace tervane::test
