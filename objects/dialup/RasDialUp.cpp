#include "objects/dialup/RasDialUp.h"

#include "objects/dialup/RasApi.h"
#include "objects/dialup/RasText.h"
#include "platform/SystemError.h"
#include "platform/text/LetterCase.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tervane {
namespace {

constexpr DWORD kNotifyWindow = 0xFFFFFFFF;
constexpr DWORD kFirstCountry = 1;
constexpr int kMostCountries = 1000; // the list may lead back into itself
constexpr std::size_t kUsualItems = 8;
// A list that grows while it is read is read again.
constexpr int kReadAttempts = 8;

// Reads a list of structures. `call` gets the place for them, its size and where to tell the
// number.
template <typename Item, typename Sizes, typename Call>
DWORD ReadList(const Sizes& sizes, std::vector<Item>& items, Call call) {
    return TryRasSizes(sizes, [&](DWORD size) {
        std::vector<std::byte> place(size * kUsualItems);
        DWORD count = 0;
        DWORD status = ERROR_BUFFER_TOO_SMALL;
        for (int i = 0; i < kReadAttempts && status == ERROR_BUFFER_TOO_SMALL; ++i) {
            auto bytes = static_cast<DWORD>(place.size());
            std::memcpy(place.data(), &size, sizeof(size)); // the first member
            status = call(reinterpret_cast<Item*>(place.data()), &bytes, &count);
            if (status == ERROR_BUFFER_TOO_SMALL) {
                place.resize(std::max<std::size_t>(bytes, place.size() * 2));
            }
        }
        count = std::min<DWORD>(count, static_cast<DWORD>(place.size() / size));
        for (DWORD i = 0; status == ERROR_SUCCESS && i < count; ++i) {
            Item item = {};
            std::memcpy(&item, place.data() + std::size_t{i} * size,
                        std::min<std::size_t>(size, sizeof(Item)));
            items.push_back(item);
        }
        return status;
    });
}

void SetOption(DWORD& options, DWORD option, bool on) noexcept {
    options = on ? options | option : options & ~option;
}

Ipv4Bytes FromRas(const RASIPADDR& address, bool isUsed) noexcept {
    return isUsed ? Ipv4Bytes{address.a, address.b, address.c, address.d} : Ipv4Bytes();
}

RASIPADDR ToRas(const Ipv4Bytes& address) noexcept {
    return {address[0], address[1], address[2], address[3]};
}

template <typename Entry>
void EncodeAddresses(const PhoneBookRecord& record, Entry& entry) noexcept {
    constexpr Ipv4Bytes kNone = {};
    entry.ipaddr = ToRas(record.address);
    entry.ipaddrDns = ToRas(record.dns);
    entry.ipaddrDnsAlt = ToRas(record.alternateDns);
    entry.ipaddrWins = ToRas(record.wins);
    entry.ipaddrWinsAlt = ToRas(record.alternateWins);
    SetOption(entry.dwfOptions, RASEO_SpecificIpAddr, record.address != kNone);
    SetOption(entry.dwfOptions, RASEO_SpecificNameServers,
              record.dns != kNone || record.alternateDns != kNone || record.wins != kNone ||
                  record.alternateWins != kNone);
}

// Since Windows 2000 an entry tells what it leads to apart from the device.
DWORD KindFor(std::wstring_view deviceType) noexcept {
    if (EqualsIgnoringAsciiCase(deviceType, L"vpn")) {
        return RASET_Vpn;
    }
    return EqualsIgnoringAsciiCase(deviceType, L"pppoe") ? RASET_Broadband : RASET_Phone;
}

} // namespace

// What is needed to dial an entry, its password included: wiped when it goes.
template <typename Form>
class RasDialUp<Form>::Parameters {
public:
    Parameters() = default;
    ~Parameters() { ZelBase::WipeMemory(&value, sizeof(value)); }
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;

    typename Form::DialParams value = {};
    BOOL hasPassword = FALSE;
};

template <typename Form>
DWORD RasDialUp<Form>::Entries(std::vector<std::wstring>& names) const {
    using EntryName = typename Form::EntryName;
    std::vector<EntryName> entries;
    const DWORD status =
        ReadList(kRasEntryNameSizes<EntryName>, entries,
                 [this](EntryName* place, DWORD* bytes, DWORD* count) {
                     return api_.enumEntries(nullptr, nullptr, place, bytes, count);
                 });
    for (const EntryName& entry : entries) {
        names.push_back(FromRasText(entry.szEntryName));
    }
    return status;
}

template <typename Form>
DWORD RasDialUp<Form>::CheckNewName(const std::wstring& name) const {
    const auto text = ToRasText<Character>(name);
    return text ? api_.validateName(nullptr, text->c_str())
                : static_cast<DWORD>(ERROR_INVALID_NAME);
}

template <typename Form>
DWORD RasDialUp<Form>::RenameEntry(const std::wstring& name, const std::wstring& newName) const {
    const auto text = ToRasText<Character>(name);
    const auto newText = ToRasText<Character>(newName);
    if (!text || !newText) {
        return ERROR_INVALID_NAME;
    }
    return api_.renameEntry(nullptr, text->c_str(), newText->c_str());
}

template <typename Form>
DWORD RasDialUp<Form>::DeleteEntry(const std::wstring& name) const {
    const auto text = ToRasText<Character>(name);
    return text ? api_.deleteEntry(nullptr, text->c_str()) : static_cast<DWORD>(ERROR_INVALID_NAME);
}

template <typename Form>
DWORD RasDialUp<Form>::ReadEntry(const std::wstring& name, EntryImage& image) const {
    using Entry = typename Form::Entry;
    const auto text = ToRasText<Character>(name);
    if (!text) {
        return ERROR_INVALID_NAME;
    }
    return TryRasSizes(kRasEntrySizes<Entry>, [&](DWORD size) {
        EntryImage read(sizeof(Entry)); // never shorter than what Decode looks at
        DWORD status = ERROR_BUFFER_TOO_SMALL;
        for (int i = 0; i < kReadAttempts && status == ERROR_BUFFER_TOO_SMALL; ++i) {
            auto bytes = static_cast<DWORD>(read.size());
            std::memcpy(read.data(), &size, sizeof(size));
            status = api_.getEntry(nullptr, text->c_str(), reinterpret_cast<Entry*>(read.data()),
                                   &bytes, nullptr, nullptr);
            if (status == ERROR_BUFFER_TOO_SMALL) {
                read.resize(std::max<std::size_t>(bytes, read.size() * 2));
            }
        }
        if (status == ERROR_SUCCESS) {
            image = std::move(read);
        }
        return status;
    });
}

template <typename Form>
DWORD RasDialUp<Form>::WriteEntry(const std::wstring& name, const EntryImage& image) const {
    const auto text = ToRasText<Character>(name);
    if (!text || text->empty()) {
        return ERROR_INVALID_NAME;
    }
    EntryImage copy = image; // the function wants it writable
    return api_.setEntry(nullptr, text->c_str(),
                         reinterpret_cast<typename Form::Entry*>(copy.data()),
                         static_cast<DWORD>(copy.size()), nullptr, 0);
}

template <typename Form>
PhoneBookRecord RasDialUp<Form>::Decode(const EntryImage& image) const {
    const auto& entry = *reinterpret_cast<const typename Form::Entry*>(image.data());
    const bool hasAddress = (entry.dwfOptions & RASEO_SpecificIpAddr) != 0;
    const bool hasServers = (entry.dwfOptions & RASEO_SpecificNameServers) != 0;
    PhoneBookRecord record;
    record.phoneNumber = FromRasText(entry.szLocalPhoneNumber);
    record.areaCode = FromRasText(entry.szAreaCode);
    record.countryCode = entry.dwCountryCode;
    record.usesAreaAndCountryCodes = (entry.dwfOptions & RASEO_UseCountryAndAreaCodes) != 0;
    record.deviceName = FromRasText(entry.szDeviceName);
    record.deviceType = FromRasText(entry.szDeviceType);
    record.address = FromRas(entry.ipaddr, hasAddress);
    record.dns = FromRas(entry.ipaddrDns, hasServers);
    record.alternateDns = FromRas(entry.ipaddrDnsAlt, hasServers);
    record.wins = FromRas(entry.ipaddrWins, hasServers);
    record.alternateWins = FromRas(entry.ipaddrWinsAlt, hasServers);
    record.usesRemoteGateway = (entry.dwfOptions & RASEO_RemoteDefaultGateway) != 0;
    record.compressesHeaders = (entry.dwfOptions & RASEO_IpHeaderCompression) != 0;
    return record;
}

template <typename Form>
DWORD RasDialUp<Form>::Encode(const PhoneBookRecord& record, EntryImage& image) const {
    auto& entry = *reinterpret_cast<typename Form::Entry*>(image.data());
    const bool isOtherKind = FromRasText(entry.szDeviceType) != record.deviceType;
    if (!PutRasText(record.phoneNumber, entry.szLocalPhoneNumber) ||
        !PutRasText(record.areaCode, entry.szAreaCode) ||
        !PutRasText(record.deviceName, entry.szDeviceName) ||
        !PutRasText(record.deviceType, entry.szDeviceType)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (entry.dwCountryCode != record.countryCode) {
        // Countries share codes, so the system goes by a number of its own.
        entry.dwCountryID = FindCountry(record.countryCode);
        entry.dwCountryCode = record.countryCode;
    }
    if (isOtherKind && entry.dwSize > offsetof(typename Form::Entry, dwType)) {
        entry.dwType = KindFor(record.deviceType);
    }
    EncodeAddresses(record, entry);
    SetOption(entry.dwfOptions, RASEO_UseCountryAndAreaCodes, record.usesAreaAndCountryCodes);
    SetOption(entry.dwfOptions, RASEO_RemoteDefaultGateway, record.usesRemoteGateway);
    SetOption(entry.dwfOptions, RASEO_IpHeaderCompression, record.compressesHeaders);
    // What a new entry may leave open.
    entry.dwFramingProtocol = entry.dwFramingProtocol ? entry.dwFramingProtocol : RASFP_Ppp;
    entry.dwfNetProtocols = entry.dwfNetProtocols ? entry.dwfNetProtocols : RASNP_Ip;
    return ERROR_SUCCESS;
}

// The country with that code: the one whose number is its code, else the first one; the code itself
// where the system has no list of them.
template <typename Form>
DWORD RasDialUp<Form>::FindCountry(DWORD code) const {
    DWORD found = code;
    bool isFound = false;
    DWORD next = code == 0 ? 0 : kFirstCountry;
    for (int i = 0; next != 0 && i < kMostCountries; ++i) {
        alignas(RASCTRYINFO) std::array<std::byte, 1024> place = {};
        auto* country = reinterpret_cast<RASCTRYINFO*>(place.data());
        country->dwSize = sizeof(*country);
        country->dwCountryID = next;
        auto bytes = static_cast<DWORD>(place.size());
        if (api_.getCountry(country, &bytes) != ERROR_SUCCESS) {
            break;
        }
        if (country->dwCountryCode == code && (!isFound || country->dwCountryID == code)) {
            found = country->dwCountryID;
            isFound = true;
        }
        next = country->dwNextCountryID;
    }
    return found;
}

template <typename Form>
DWORD RasDialUp<Form>::ReadParameters(const std::wstring& name, Parameters& parameters) const {
    using DialParams = typename Form::DialParams;
    return TryRasSizes(kRasDialParamsSizes<DialParams>, [&](DWORD size) -> DWORD {
        parameters.value = {};
        parameters.value.dwSize = size;
        if (!PutRasText(name, parameters.value.szEntryName)) {
            return ERROR_INVALID_NAME;
        }
        return api_.getDialParams(nullptr, &parameters.value, &parameters.hasPassword);
    });
}

template <typename Form>
DWORD RasDialUp<Form>::ReadCredentials(const std::wstring& name,
                                       DialCredentials& credentials) const {
    Parameters parameters;
    const DWORD status = ReadParameters(name, parameters);
    if (status == ERROR_SUCCESS) {
        credentials = {FromRasText(parameters.value.szUserName),
                       FromRasText(parameters.value.szDomain), parameters.hasPassword != FALSE};
    }
    return status;
}

template <typename Form>
DWORD RasDialUp<Form>::WriteCredentials(
    const std::wstring& name, const std::wstring& userName, const std::wstring& domain,
    const std::optional<ZelBase::WideSecretText>& password) const {
    Parameters parameters;
    const DWORD status = ReadParameters(name, parameters);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    // A password that is kept is written as it was read: newer systems hand out a stand-in for it.
    const bool remove = password ? password->IsEmpty() : !parameters.hasPassword;
    if (!PutRasText(userName, parameters.value.szUserName) ||
        !PutRasText(domain, parameters.value.szDomain) ||
        (password && !PutRasSecret(password->Text(), parameters.value.szPassword))) {
        return ERROR_INVALID_PARAMETER;
    }
    return api_.setDialParams(nullptr, &parameters.value, remove);
}

template <typename Form>
DWORD RasDialUp<Form>::Devices(std::vector<DialDevice>& devices) const {
    using Device = typename Form::Device;
    std::vector<Device> found;
    const DWORD status =
        ReadList(kRasDeviceSizes<Device>, found, [this](Device* place, DWORD* bytes, DWORD* count) {
            return api_.enumDevices(place, bytes, count);
        });
    for (const Device& device : found) {
        devices.push_back({FromRasText(device.szDeviceName), FromRasText(device.szDeviceType)});
    }
    return status;
}

template <typename Form>
DWORD RasDialUp<Form>::Connections(std::vector<DialConnection>& connections) const {
    using Connection = typename Form::Connection;
    std::vector<Connection> found;
    const DWORD status = ReadList(kRasConnectionSizes<Connection>, found,
                                  [this](Connection* place, DWORD* bytes, DWORD* count) {
                                      return api_.enumConnections(place, bytes, count);
                                  });
    for (const Connection& connection : found) {
        connections.push_back({connection.hrasconn, FromRasText(connection.szEntryName)});
    }
    return status;
}

template <typename Form>
DWORD RasDialUp<Form>::State(HRASCONN connection, DWORD& state) const {
    using Status = typename Form::Status;
    return TryRasSizes(kRasStatusSizes<Status>, [&](DWORD size) {
        Status read = {};
        read.dwSize = size;
        const DWORD status = api_.getStatus(connection, &read);
        if (status == ERROR_SUCCESS) {
            state = static_cast<DWORD>(read.rasconnstate);
        }
        return status;
    });
}

template <typename Form>
DWORD RasDialUp<Form>::Dial(const std::wstring& name, const std::wstring& userName,
                            const ZelBase::WideSecretText& password, HWND window,
                            HRASCONN& connection) const {
    Parameters parameters;
    const DWORD status = ReadParameters(name, parameters);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    if ((!userName.empty() && !PutRasText(userName, parameters.value.szUserName)) ||
        (!password.IsEmpty() && !PutRasSecret(password.Text(), parameters.value.szPassword))) {
        return ERROR_INVALID_PARAMETER;
    }
    return api_.dial(nullptr, nullptr, &parameters.value, kNotifyWindow, window, &connection);
}

template <typename Form>
DWORD RasDialUp<Form>::NotifyOfEnd(HRASCONN connection, HANDLE event) const {
    return api_.notifyConnection(connection, event, RASCN_Disconnection);
}

template <typename Form>
DWORD RasDialUp<Form>::StartHangUp(HRASCONN connection) const {
    return api_.hangUp(connection);
}

template <typename Form>
std::wstring RasDialUp<Form>::ErrorText(DWORD error) const {
    Character text[512] = {};
    const bool isDialUpError = error >= RASBASE && error <= RASBASEEND;
    if (isDialUpError &&
        api_.getErrorText(error, text, static_cast<DWORD>(std::size(text))) == ERROR_SUCCESS) {
        return FromRasText(text);
    }
    return SystemErrorText(error);
}

template class RasDialUp<WideRas>;
template class RasDialUp<NarrowRas>;

} // namespace tervane
