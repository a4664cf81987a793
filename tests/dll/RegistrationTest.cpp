// What registration leaves in the registry, to the last value, and what unregistering takes away
// again. Scripts in the field were written against this layout, oddities included.

#include "platform/registry/RegistryKey.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/ScratchRegistry.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace tervane::test {
namespace {

constexpr const wchar_t* kLibrary = L"{BAC0FBE8-26E0-43D5-8E83-CB15EFB9BC14}";
constexpr const wchar_t* kSystemInfoLibrary = L"{E3145E41-D873-4D34-BC9E-32C2B15435A8}";
constexpr const wchar_t* kMailLibrary = L"{CA668F19-CC4D-42BE-95AB-DD457330CEA0}";

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

Tree Registered(const ClassFacts& facts) {
    Tree tree;
    const std::wstring progId = facts.ProgId();
    for (const std::wstring& path :
         {progId + L".1", progId, L"CLSID\\" + std::wstring(facts.text)}) {
        if (const auto key = RegistryKey::Open(RegistryHive::kClassesRoot, path); key.IsOpen()) {
            Collect(key, path, tree);
        }
    }
    return tree;
}

// The oddities of single classes are as old as the classes.
Tree Expected(const ClassFacts& facts, const std::wstring& module) {
    const std::wstring name = facts.name;
    const std::wstring description = name + L" Class";
    const std::wstring progId = facts.ProgId();
    const std::wstring key = L"CLSID\\" + std::wstring(facts.text);
    const bool isDialUp = name == L"RASMgr" || name == L"PhoneBookEntry";
    const bool isBoth = isDialUp || name == L"WindowMgr";
    Tree tree = {
        {progId + L".1", description},
        {progId + L".1\\CLSID", facts.text},
        {progId, description},
        {progId + L"\\CLSID", facts.text},
        {key, description},
        {key + L"\\ProgID", progId + L".1"},
        {key + L"\\VersionIndependentProgID", progId},
        {key + L"\\InprocServer32", module},
        {key + L"\\InprocServer32:ThreadingModel", isBoth ? L"both" : L"Apartment"},
    };
    if (!isBoth) {
        tree[progId + L"\\CurVer"] =
            name == L"DHCPConfiguration" ? L"Tervane.IDHCPConfiguration.1" : progId + L".1";
    }
    if (!isDialUp) {
        tree[key + L"\\Programmable"] = L"";
        tree[key + L"\\TypeLib"] = facts.vendor[0] == L'T'   ? kLibrary
                                   : facts.vendor[0] == L'O' ? kSystemInfoLibrary
                                                             : kMailLibrary;
    }
    if (facts.bitmap) {
        tree[key + L"\\Control"] = L"";
        tree[key + L"\\Insertable"] = L"";
        tree[key + L"\\ToolboxBitmap32"] = module + L", " + facts.bitmap;
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
    // Changes the registration script that names `mark`: a text before it for one as long.
    void ReplaceInScript(const char* mark, const char* old, const char* text) {
        Unload();
        std::fstream file(std::filesystem::path(path_),
                          std::ios::binary | std::ios::in | std::ios::out);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        file.seekp(static_cast<std::streamoff>(bytes.rfind(old, bytes.find(mark))));
        file << text;
        file.close();
        Load();
    }
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
    for (const ClassFacts& script : kClasses) {
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
    for (const ClassFacts& script : kClasses) {
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
    const std::wstring key = L"CLSID\\" + std::wstring(kClasses[14].text);
    RegistryKey::Create(RegistryHive::kClassesRoot, key + L"\\LocalServer32")
        .WriteText(L"", L"old.exe");
    ASSERT_EQ(S_OK, module.Register());
    EXPECT_EQ(Expected(kClasses[14], module.ShortPath()), Registered(kClasses[14]));
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
    EXPECT_EQ(Tree(), Registered(kClasses[0]));
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
    EXPECT_EQ(Expected(kClasses[5], module.ShortPath()), Registered(kClasses[5]));
    EXPECT_EQ(Tree(), Registered(kClasses[6]));
    EXPECT_EQ(Tree(), Registered(kClasses[7]));
    EXPECT_EQ(L"", TypeLibraryPath());
    EXPECT_EQ(S_OK, module.Unregister());
    EXPECT_EQ(Tree(), Registered(kClasses[5]));
}

TEST(Registration, TakesTheOtherClassesAwayWhenOneCannotBe) {
    const Apartment apartment;
    CopiedModule module(L"plain");
    ASSERT_EQ(S_OK, module.Register());
    module.ReplaceInScript("Tervane.DHCP.1", "HKCR", "HK!!");
    EXPECT_TRUE(FAILED(module.Unregister()));
    for (const ClassFacts& script : kClasses) {
        const bool stays = std::wstring_view(script.name) == L"DHCP";
        EXPECT_EQ(stays ? Expected(script, module.ShortPath()) : Tree(), Registered(script))
            << script.name;
    }
    EXPECT_EQ(L"", TypeLibraryPath());
    module.ReplaceInScript("Tervane.DHCP.1", "HK!!", "HKCR");
    EXPECT_EQ(S_OK, module.Unregister());
    EXPECT_EQ(Tree(), Registered(FactsOf(L"DHCP")));
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
