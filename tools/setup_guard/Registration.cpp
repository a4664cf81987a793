#include "tools/setup_guard/Registration.h"

#include "ZelBase/Handles.h"
#include "platform/ComValues.h"

#include <oleauto.h>

#include <array>
#include <vector>

namespace setup_guard {
namespace {

struct KeyTraits {
    using Type = HKEY;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type key) noexcept { RegCloseKey(key); }
};
using UniqueKey = ZelBase::UniqueResource<KeyTraits>;

struct FileIdentity {
    DWORD volume = 0;
    DWORD high = 0;
    DWORD low = 0;
    bool operator==(const FileIdentity&) const = default;
};

bool Identify(const std::wstring& path, FileIdentity& identity) {
    const ZelBase::UniqueFile file(
        CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr));
    BY_HANDLE_FILE_INFORMATION information;
    if (!file || !GetFileInformationByHandle(file.Get(), &information)) {
        return false;
    }
    identity = {information.dwVolumeSerialNumber, information.nFileIndexHigh,
                information.nFileIndexLow};
    return true;
}

// The class identifiers of a type library, as the registry spells them.
std::vector<std::wstring> ClassesOf(const std::wstring& library) {
    std::vector<std::wstring> classes;
    tervane::ComPtr<ITypeLib> types;
    if (FAILED(LoadTypeLibEx(library.c_str(), REGKIND_NONE, types.Put()))) {
        return classes;
    }
    for (UINT i = 0; i < types->GetTypeInfoCount(); ++i) {
        tervane::ComPtr<ITypeInfo> type;
        TYPEATTR* attributes = nullptr;
        if (FAILED(types->GetTypeInfo(i, type.Put())) || FAILED(type->GetTypeAttr(&attributes))) {
            continue;
        }
        std::array<wchar_t, 40> text = {};
        if (attributes->typekind == TKIND_COCLASS &&
            StringFromGUID2(attributes->guid, text.data(), int{text.size()}) != 0) {
            classes.emplace_back(text.data());
        }
        type->ReleaseTypeAttr(attributes);
    }
    return classes;
}

std::wstring RegisteredPath(const std::wstring& clsid, REGSAM view) {
    const std::wstring name = L"Software\\Classes\\CLSID\\" + clsid + L"\\InprocServer32";
    UniqueKey key;
    std::array<wchar_t, MAX_PATH + 1> path = {};
    DWORD size = (path.size() - 1) * sizeof(wchar_t);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, KEY_QUERY_VALUE | view, key.Put()) !=
            ERROR_SUCCESS ||
        RegQueryValueExW(key.Get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path.data()),
                         &size) != ERROR_SUCCESS) {
        return {};
    }
    return path.data();
}

} // namespace

bool LeadsTo(const std::wstring& library, REGSAM view, std::wstring& complaint) {
    FileIdentity wanted;
    const std::vector<std::wstring> classes = ClassesOf(library);
    if (classes.empty() || !Identify(library, wanted)) {
        complaint = library + L" cannot be read";
        return false;
    }
    for (const std::wstring& clsid : classes) {
        const std::wstring path = RegisteredPath(clsid, view);
        FileIdentity found;
        if (path.empty() || !Identify(path, found) || !(found == wanted)) {
            complaint = L"class " + clsid + L" leads to " + (path.empty() ? L"nothing" : path);
            return false;
        }
    }
    return true;
}

} // namespace setup_guard
