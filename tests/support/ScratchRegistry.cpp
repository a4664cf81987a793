#include "support/ScratchRegistry.h"

#include <sstream>
#include <vector>

namespace tervane::test {
namespace {

std::wstring refusedName;

HKEY HandleOf(RegistryHive hive) {
    const HKEY kHandles[] = {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER,   HKEY_LOCAL_MACHINE,
                             HKEY_USERS,        HKEY_CURRENT_CONFIG, HKEY_DYN_DATA};
    return kHandles[static_cast<int>(hive)];
}

LSTATUS WINAPI SetValue(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                        DWORD size) {
    return name == refusedName ? static_cast<LSTATUS>(ERROR_ACCESS_DENIED)
                               : RegSetValueExW(key, name, reserved, type, data, size);
}

LSTATUS WINAPI DeleteValue(HKEY key, LPCWSTR name) {
    return name == refusedName ? static_cast<LSTATUS>(ERROR_ACCESS_DENIED)
                               : RegDeleteValueW(key, name);
}

LSTATUS WINAPI CreateKey(HKEY parent, LPCWSTR path, DWORD reserved, LPWSTR type, DWORD options,
                         REGSAM access, LPSECURITY_ATTRIBUTES security, HKEY* key, DWORD* outcome) {
    return std::wstring(path).ends_with(refusedName)
               ? static_cast<LSTATUS>(ERROR_ACCESS_DENIED)
               : RegCreateKeyExW(parent, path, reserved, type, options, access, security, key,
                                 outcome);
}

// What refuses in its wide form must refuse in its narrow one as well.
template <typename... Arguments>
LSTATUS WINAPI Refuse(Arguments...) {
    return ERROR_ACCESS_DENIED;
}

std::vector<std::wstring> Split(const std::wstring& text, const std::wstring& separator) {
    std::vector<std::wstring> parts;
    for (std::size_t start = 0, end = 0; end != std::wstring::npos;
         start = end + separator.size()) {
        end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
    }
    return parts;
}

void WriteValue(const RegistryKey& key, const std::wstring& name, const std::wstring& value) {
    if (value.starts_with(L'#')) {
        key.WriteNumber(name, std::stoul(value.substr(1)));
    } else if (value.starts_with(L'[')) {
        key.WriteTexts(name, value == L"[]" ? std::vector<std::wstring>()
                                            : Split(value.substr(1, value.size() - 2), L"|"));
    } else {
        key.WriteText(name, value);
    }
}

} // namespace

ScratchHive::ScratchHive(RegistryHive hive)
    : hive_(hive), handle_(HandleOf(hive)),
      place_(L"Tervane tests\\" + std::to_wstring(static_cast<int>(hive))) {
    DeleteTree(RegistryHive::kCurrentUser, place_);
    UniqueRegistryKey key;
    RegCreateKeyW(HKEY_CURRENT_USER, place_.c_str(), key.Put());
    RegOverridePredefKey(handle_, key.Get());
}

ScratchHive::~ScratchHive() {
    RegOverridePredefKey(handle_, nullptr);
    DeleteTree(RegistryHive::kCurrentUser, place_);
}

RegistryKey ScratchHive::Open(const std::wstring& path) const {
    return RegistryKey::Open(hive_, path);
}

RegistryKey ScratchHive::Create(const std::wstring& path) const {
    return RegistryKey::Create(hive_, path);
}

void ScratchHive::Fill(const std::wstring& base, const std::wstring& text) const {
    std::wistringstream lines(text);
    for (std::wstring line; std::getline(lines >> std::ws, line);) {
        const std::size_t colon = line.find(L": ");
        const RegistryKey key = Create(base + line.substr(0, colon));
        if (colon == std::wstring::npos) {
            continue;
        }
        for (const std::wstring& value : Split(line.substr(colon + 2), L"; ")) {
            const std::size_t sign = value.find(L'=');
            WriteValue(key, value.substr(0, sign), value.substr(sign + 1));
        }
    }
}

void DeleteTree(RegistryHive hive, const std::wstring& path) {
    for (const std::wstring& name : RegistryKey::Open(hive, path).SubKeyNames()) {
        DeleteTree(hive, path + L"\\" + name);
    }
    RegistryKey::Delete(hive, path);
}

void GrantOnly(HKEY key, DWORD rights) {
    struct {
        ACL list;
        ACCESS_ALLOWED_ACE entry;
        DWORD rest[4];
    } granted = {};
    SID everybody = {SID_REVISION, 1, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID}};
    InitializeAcl(&granted.list, sizeof(granted), ACL_REVISION);
    AddAccessAllowedAce(&granted.list, ACL_REVISION, rights, &everybody);
    SECURITY_DESCRIPTOR security;
    InitializeSecurityDescriptor(&security, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&security, TRUE, &granted.list, FALSE);
    RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, &security);
}

const RegistryApi& RefuseValue(const std::wstring& name) {
    static const RegistryApi api = [] {
        RegistryApi refusing = RegistryApi::System();
        refusing.setValueWide = &SetValue;
        refusing.setValueNarrow = &Refuse;
        refusing.deleteValueWide = &DeleteValue;
        refusing.deleteValueNarrow = &Refuse;
        return refusing;
    }();
    refusedName = name;
    return api;
}

const RegistryApi& RefuseKey(const std::wstring& end) {
    static const RegistryApi api = [] {
        RegistryApi refusing = RegistryApi::System();
        refusing.createKeyWide = &CreateKey;
        refusing.createKeyNarrow = &Refuse;
        refusing.deleteKeyWide = &Refuse;
        refusing.deleteKeyNarrow = &Refuse;
        return refusing;
    }();
    refusedName = end;
    return api;
}

} // namespace tervane::test
