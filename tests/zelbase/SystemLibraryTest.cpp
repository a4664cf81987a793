// Where libraries come from, on this system and on systems that are played.

#include "ZelBase/SystemLibrary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace ZelBase::test {
namespace {

constexpr wchar_t kProbe[] = L"pin_probe.dll";

std::wstring HostFolder() {
    const std::wstring program = ModulePath(nullptr);
    return program.substr(0, program.find_last_of(L'\\') + 1);
}

TEST(SystemLibrary, IgnoresWhatIsPlantedInTheHostsFolder) {
    const std::wstring planted = HostFolder() + L"inetmib1.dll";
    ASSERT_TRUE(CopyFileW((HostFolder() + kProbe).c_str(), planted.c_str(), FALSE));
    // Whoever asks by the name alone walks into the trap.
    UniqueLibrary byName(LoadLibraryW(L"inetmib1.dll"));
    EXPECT_EQ(ModulePath(byName.Get()), planted);
    byName.Reset();
    {
        const SystemLibrary library("inetmib1.dll");
        EXPECT_TRUE(library.Find<FARPROC>("SnmpExtensionInit"));
        EXPECT_FALSE(ModulePath(library.Get()).starts_with(HostFolder()));
    }
    EXPECT_TRUE(DeleteFileW(planted.c_str()));
    EXPECT_FALSE(SystemLibrary("pin_probe.dll"));
}

// What a played system was asked to load.
std::string asked;
const HMODULE kLoaded = GetModuleHandleW(nullptr);

template <typename Character>
UINT WINAPI Directory(Character* path, UINT) {
    const std::string text = sizeof(Character) == 1 ? "N:\\sys" : "W:\\sys";
    std::copy_n(text.c_str(), text.size() + 1, path);
    return static_cast<UINT>(text.size());
}

template <typename Character>
HMODULE WINAPI Load(const Character* path, HANDLE, DWORD flags) {
    asked += std::string(path, path + std::char_traits<Character>::length(path)) + ":" +
             std::to_string(flags) + " ";
    return kLoaded;
}

// As the 95 family answers the wide functions.
template <typename Result, typename... Arguments>
Result WINAPI AnswerNothing(Arguments...) {
    SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return {};
}
HMODULE WINAPI FindNothing(const wchar_t* path, HANDLE, DWORD flags) {
    Load(path, nullptr, flags);
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

LibraryApi Played(bool wide) {
    LibraryApi api = LibraryApi::System();
    api.getSystemDirectoryW = wide ? Directory<wchar_t> : AnswerNothing<UINT, wchar_t*, UINT>;
    api.getSystemDirectoryA = Directory<char>;
    api.loadLibraryW = wide ? Load<wchar_t> : AnswerNothing<HMODULE, const wchar_t*, HANDLE, DWORD>;
    api.loadLibraryA = Load<char>;
    api.getModuleHandleEx = nullptr;
    api.searchesSystemOnly = false;
    return api;
}

TEST(SystemLibrary, AsksEachSystemInTheWayThatItKnows) {
    LibraryApi systemOnly = Played(true);
    systemOnly.searchesSystemOnly = true;
    LibraryApi lacking = Played(true);
    lacking.loadLibraryW = FindNothing;
    LibraryApi halfWide = Played(false);
    halfWide.getSystemDirectoryW = Directory<wchar_t>;
    for (const auto& [api, path] : {std::pair(systemOnly, "W:\\sys\\x.dll:2048 "),
                                    {Played(true), "W:\\sys\\x.dll:8 "},
                                    {lacking, "W:\\sys\\x.dll:8 "},
                                    {Played(false), "N:\\sys\\x.dll:8 "},
                                    {halfWide, "N:\\sys\\x.dll:8 "}}) {
        asked.clear();
        const HMODULE loaded = SystemLibrary("x.dll", api).Get();
        EXPECT_EQ(asked, path);
        EXPECT_EQ(loaded != nullptr, api.loadLibraryW != FindNothing);
    }
    asked.clear();
    EXPECT_FALSE(SystemLibrary(std::string(MAX_PATH, 'x').c_str(), Played(true)));
    EXPECT_EQ(asked, "");
}

// The library stays although its user lets go of it, until the reference goes, too.
TEST(SystemLibrary, ReferencesTheModuleOfCodeOnEverySystem) {
    const LibraryApi& real = LibraryApi::System();
    LibraryApi before2000 = real;
    before2000.getModuleHandleEx = nullptr;
    LibraryApi narrow = before2000;
    narrow.getModuleFileNameW = AnswerNothing;
    narrow.loadLibraryW = AnswerNothing;
    LibraryApi other = before2000;
    other.loadLibraryW = [](const wchar_t*, HANDLE, DWORD)
                             WINAPI -> HMODULE { return LoadLibraryW(L"kernel32.dll"); };
    for (const LibraryApi& api : {real, before2000, narrow}) {
        UniqueLibrary probe(LoadLibraryW(kProbe));
        EXPECT_EQ(ModulePath(probe.Get(), api), HostFolder() + kProbe);
        auto reference = ReferenceModuleOf(
            reinterpret_cast<const void*>(GetProcAddress(probe.Get(), "StartLingering")), api);
        EXPECT_EQ(reference.Get(), probe.Get());
        EXPECT_FALSE(ReferenceModuleOf(probe.Get(), other));
        probe.Reset();
        EXPECT_TRUE(GetModuleHandleW(kProbe));
        reference.Reset();
        EXPECT_FALSE(GetModuleHandleW(kProbe));
        const int onStack = 0;
        EXPECT_FALSE(ReferenceModuleOf(&onStack, api));
    }
}

} // namespace
} // namespace ZelBase::test
