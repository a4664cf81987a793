#include "objects/dialup/DefaultConnection.h"

#include "platform/registry/RegistryKey.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace tervane {
namespace {

struct Place {
    const wchar_t* path;
    const wchar_t* name;
};
// In the order in which they are looked at.
constexpr Place kPlaces[] = {
    {L"Software\\Microsoft\\RAS AutoDial\\Default", L"DefaultInternet"},
    {L"RemoteAccess", L"InternetProfile"},
};

bool Exists(const Place& place, const RegistryApi& api) {
    return RegistryKey::Open(RegistryHive::kCurrentUser, place.path, KEY_QUERY_VALUE, api).IsOpen();
}

// Those that exist on this machine. Where neither does nobody can tell yet which one the system
// will look at, so both are made.
std::vector<Place> PlacesToWrite(const RegistryApi& api) {
    std::vector<Place> places;
    std::copy_if(std::begin(kPlaces), std::end(kPlaces), std::back_inserter(places),
                 [&api](const Place& place) { return Exists(place, api); });
    if (places.empty()) {
        places.assign(std::begin(kPlaces), std::end(kPlaces));
    }
    return places;
}

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

std::wstring DefaultConnection(const RegistryApi& api) {
    for (const Place& place : kPlaces) {
        std::wstring entry = Read(place, api);
        if (!entry.empty()) {
            return entry;
        }
    }
    return {};
}

bool SetDefaultConnection(const std::wstring& entry, const RegistryApi& api) {
    std::vector<std::pair<Place, std::wstring>> written;
    for (const Place& place : PlacesToWrite(api)) {
        written.emplace_back(place, Read(place, api));
        if (!Write(place, entry, api)) {
            for (const auto& [changed, before] : written) {
                Write(changed, before, api);
            }
            return false;
        }
    }
    return true;
}

} // namespace tervane
