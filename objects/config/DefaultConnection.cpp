#include "objects/config/DefaultConnection.h"

#include "platform/RegistryKey.h"

namespace tervane {
namespace {

struct Place {
    const wchar_t* path;
    const wchar_t* name;
};
constexpr Place kRemoteAccess = {L"RemoteAccess", L"InternetProfile"};
constexpr Place kAutomaticDialling = {L"Software\\Microsoft\\RAS AutoDial\\Default",
                                      L"DefaultInternet"};

std::wstring Read(const Place& place, const RegistryApi& api) {
    return RegistryKey::Open(RegistryHive::kCurrentUser, place.path, KEY_QUERY_VALUE, api)
        .ReadText(place.name)
        .value_or(L"");
}

bool Write(const Place& place, const std::wstring& entry, const RegistryApi& api) {
    if (entry.empty()) {
        const RegistryKey key = RegistryKey::Open(RegistryHive::kCurrentUser, place.path,
                                                  KEY_QUERY_VALUE | KEY_SET_VALUE, api);
        return !key.TypeOf(place.name) || key.DeleteValue(place.name);
    }
    return RegistryKey::Create(RegistryHive::kCurrentUser, place.path, KEY_SET_VALUE, api)
        .WriteText(place.name, entry);
}

} // namespace

std::wstring DefaultConnection(PlatformFamily family, const RegistryApi& api) {
    std::wstring entry;
    if (family == PlatformFamily::kXp) {
        entry = Read(kAutomaticDialling, api);
    }
    return entry.empty() ? Read(kRemoteAccess, api) : entry;
}

bool SetDefaultConnection(PlatformFamily family, const std::wstring& entry,
                          const RegistryApi& api) {
    const std::wstring before = Read(kRemoteAccess, api);
    if (!Write(kRemoteAccess, entry, api)) {
        return false;
    }
    if (family != PlatformFamily::kXp || Write(kAutomaticDialling, entry, api)) {
        return true;
    }
    Write(kRemoteAccess, before, api);
    return false;
}

} // namespace tervane
