#include "component/TypeLibrary.h"

#include "ZelBase/SystemLibrary.h"
#include "ZelBase/threads/CriticalSection.h"
#include "component/ModuleState.h"
#include "platform/registry/RegistryKey.h"
#include "platform/text/LetterCase.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <map>
#include <unordered_map>

namespace tervane {
namespace {

struct GuidLess {
    bool operator()(const GUID& a, const GUID& b) const noexcept {
        return memcmp(&a, &b, sizeof a) < 0;
    }
};

// By DISPID and how it is invoked.
using ArgumentCounts = std::map<std::pair<DISPID, INVOKEKIND>, UINT>;

struct TypeInfoCache {
    ZelBase::CriticalSection mutex;
    ComPtr<ITypeLib> library;
    std::map<GUID, ComPtr<ITypeInfo>, GuidLess> infos;
    std::map<ITypeInfo*, ArgumentCounts> counts;
    std::map<ITypeInfo*, std::unordered_map<std::wstring, DISPID>> names;
};

// Never destroyed by the C++ runtime: at process exit the automation library that the pointers lead
// into may be gone already.
TypeInfoCache& Cache() {
    static auto* cache = new TypeInfoCache;
    return *cache;
}

ArgumentCounts CountArguments(ITypeInfo& info) {
    ArgumentCounts counts;
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(info.GetFuncDesc(i, &function)); ++i) {
        UINT arguments = 0;
        for (SHORT p = 0; p < function->cParams; ++p) {
            const USHORT flags = function->lprgelemdescParam[p].paramdesc.wParamFlags;
            arguments += (flags & (PARAMFLAG_FRETVAL | PARAMFLAG_FLCID)) == 0;
        }
        counts[{function->memid, function->invkind}] = arguments;
        info.ReleaseFuncDesc(function);
    }
    return counts;
}

// Replaces what follows the last "." of the path; the whole path counts, as it always did here.
std::wstring WithTypeLibraryExtension(std::wstring path) {
    const std::size_t dot = path.rfind(L'.');
    if (dot != std::wstring::npos) {
        path.resize(dot);
    }
    return path + L".tlb";
}

struct LibraryAttributes {
    explicit LibraryAttributes(ITypeLib* owner) noexcept : library(owner) {
        result = library->GetLibAttr(&attributes);
    }
    ~LibraryAttributes() {
        if (attributes) {
            library->ReleaseTLibAttr(attributes);
        }
    }
    LibraryAttributes(const LibraryAttributes&) = delete;
    LibraryAttributes& operator=(const LibraryAttributes&) = delete;

    ITypeLib* library;
    TLIBATTR* attributes = nullptr;
    HRESULT result;
};

// The key of the library's entry for one architecture, below HKEY_CLASSES_ROOT.
std::wstring KeyOf(const TLIBATTR& library, SYSKIND architecture) {
    wchar_t id[40];
    StringFromGUID2(library.guid, id, static_cast<int>(std::size(id)));
    return std::wstring(L"TypeLib\\") + id + L"\\" + HexText(library.wMajorVerNum) + L"." +
           HexText(library.wMinorVerNum) + L"\\" + HexText(library.lcid) +
           (architecture == SYS_WIN64 ? L"\\win64" : L"\\win32");
}

// The file that is registered for that architecture; nothing when there is none, or no more.
std::optional<std::wstring> RegisteredFile(const TLIBATTR& library, SYSKIND architecture) {
    auto file =
        RegistryKey::Open(RegistryHive::kClassesRoot, KeyOf(library, architecture)).ReadText(L"");
    return file && GetFileAttributesW(file->c_str()) != INVALID_FILE_ATTRIBUTES ? file
                                                                                : std::nullopt;
}

// Paths have short forms, too.
bool IsSameFile(const std::wstring& one, const std::wstring& other) {
    wchar_t shortOne[MAX_PATH];
    wchar_t shortOther[MAX_PATH];
    const DWORD length = GetShortPathNameW(one.c_str(), shortOne, MAX_PATH);
    const DWORD otherLength = GetShortPathNameW(other.c_str(), shortOther, MAX_PATH);
    const bool areShort = length - 1 < MAX_PATH - 1 && otherLength - 1 < MAX_PATH - 1;
    return areShort ? lstrcmpiW(shortOne, shortOther) == 0
                    : lstrcmpiW(one.c_str(), other.c_str()) == 0;
}

// Takes out everything that the system knows of the library for this architecture.
HRESULT TakeOut(const TLIBATTR& library) {
    // Looked up at run time: the first versions of the automation library lack it, and there a
    // registered type library simply stays.
    const ZelBase::SystemLibrary automation("oleaut32.dll");
    using UnRegister = HRESULT(STDAPICALLTYPE*)(REFGUID, WORD, WORD, LCID, SYSKIND);
    const auto unregister = automation.Find<UnRegister>("UnRegisterTypeLib");
    return unregister ? unregister(library.guid, library.wMajorVerNum, library.wMinorVerNum,
                                   library.lcid, library.syskind)
                      : S_OK;
}

} // namespace

ITypeInfo* TypeInfoFor(REFGUID id) noexcept {
    try {
        TypeInfoCache& cache = Cache();
        const ZelBase::CriticalSectionLock lock(cache.mutex);
        if (const auto known = cache.infos.find(id); known != cache.infos.end()) {
            return known->second.Get();
        }
        if (!cache.library) {
            LoadedTypeLibrary loaded;
            if (FAILED(LoadModuleTypeLibrary(loaded))) {
                return nullptr;
            }
            cache.library = std::move(loaded.library);
        }
        ComPtr<ITypeInfo> info;
        if (FAILED(cache.library->GetTypeInfoOfGuid(id, info.Put()))) {
            return nullptr;
        }
        return (cache.infos[id] = std::move(info)).Get();
    } catch (...) {
        return nullptr;
    }
}

HRESULT MemberId(ITypeInfo* info, LPOLESTR name, DISPID* id) {
    // Names may be spelled in any case; whoever tries them all must not fill the memory.
    constexpr std::size_t kMostSpellings = 500;
    TypeInfoCache& cache = Cache();
    const ZelBase::CriticalSectionLock lock(cache.mutex);
    auto& known = cache.names[info];
    if (const auto found = known.find(name); found != known.end()) {
        *id = found->second;
        return S_OK;
    }
    const HRESULT result = info->GetIDsOfNames(&name, 1, id);
    if (SUCCEEDED(result) && known.size() < kMostSpellings) {
        known.emplace(name, *id);
    }
    return result;
}

std::optional<UINT> MostArguments(ITypeInfo* info, DISPID member, WORD flags) {
    TypeInfoCache& cache = Cache();
    const ZelBase::CriticalSectionLock lock(cache.mutex);
    auto counts = cache.counts.find(info);
    if (counts == cache.counts.end()) {
        counts = cache.counts.emplace(info, CountArguments(*info)).first;
    }
    std::optional<UINT> most;
    for (const INVOKEKIND kind :
         {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT, INVOKE_PROPERTYPUTREF}) {
        const auto count = counts->second.find({member, kind});
        if ((flags & kind) != 0 && count != counts->second.end()) {
            most = std::max(most.value_or(0), count->second);
        }
    }
    return most;
}

void ReleaseTypeInfo() noexcept {
    delete &Cache();
}

std::wstring ModulePath() {
    const ModuleState* state = ModuleState::Get();
    return ZelBase::ModulePath(state ? state->Instance() : nullptr);
}

HRESULT LoadModuleTypeLibrary(LoadedTypeLibrary& loaded) {
    loaded.path = ModulePath();
    // REGKIND_NONE: loading must never register by the way.
    HRESULT result = LoadTypeLibEx(loaded.path.c_str(), REGKIND_NONE, loaded.library.Put());
    if (FAILED(result)) {
        loaded.path = WithTypeLibraryExtension(loaded.path);
        result = LoadTypeLibEx(loaded.path.c_str(), REGKIND_NONE, loaded.library.Put());
    }
    return result;
}

HRESULT RegisterTypeLibrary() {
    LoadedTypeLibrary loaded;
    if (const HRESULT result = LoadModuleTypeLibrary(loaded); FAILED(result)) {
        return result;
    }
    const std::size_t separator = loaded.path.find_last_of(L"\\/:");
    std::wstring helpDirectory =
        loaded.path.substr(0, separator == std::wstring::npos ? 0 : separator + 1);
    return RegisterTypeLib(loaded.library.Get(), loaded.path.data(), helpDirectory.data());
}

HRESULT UnregisterTypeLibrary() {
    LoadedTypeLibrary loaded;
    if (const HRESULT result = LoadModuleTypeLibrary(loaded); FAILED(result)) {
        return result;
    }
    const LibraryAttributes attributes(loaded.library.Get());
    if (FAILED(attributes.result)) {
        return attributes.result;
    }
    const TLIBATTR& library = *attributes.attributes;
    const auto registered = RegisteredFile(library, library.syskind);
    if (registered && !IsSameFile(*registered, loaded.path)) {
        return S_OK; // another copy's
    }
    const std::wstring key = KeyOf(library, library.syskind);
    const auto isRegistered = [&key] {
        return RegistryKey::Open(RegistryHive::kClassesRoot, key).IsOpen();
    };
    // What is not registered need not be unregistered: doing it twice is no failure.
    if (!isRegistered()) {
        return S_OK;
    }
    // The system's function takes the interfaces, too, which the other architecture still needs.
    if (RegisteredFile(library, library.syskind == SYS_WIN64 ? SYS_WIN32 : SYS_WIN64)) {
        return RegistryKey::Delete(RegistryHive::kClassesRoot, key)
                   ? S_OK
                   : HRESULT_FROM_WIN32(GetLastError());
    }
    const HRESULT result = TakeOut(library);
    return FAILED(result) && !isRegistered() ? S_OK : result;
}

} // namespace tervane
