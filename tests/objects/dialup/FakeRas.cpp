#include "tests/objects/dialup/FakeRas.h"

namespace tervane::test {
namespace {

using Lock = std::lock_guard<TestMutex>;

template <typename Character>
std::wstring Wide(const Character* text) {
    if constexpr (sizeof(Character) == sizeof(wchar_t)) {
        return text;
    } else {
        return FromNarrow(text);
    }
}

// Whether the release knows a structure of that size, as one of those up to its own.
template <typename Sizes>
bool Knows(const Sizes& sizes, DWORD size) {
    const std::size_t own = sizes.size() == 2
                                ? (FakeRas::Get().release >= 2 ? 1 : 0)
                                : std::min<std::size_t>(FakeRas::Get().release, sizes.size() - 1);
    return std::find(sizes.begin() + own, sizes.end(), size) != sizes.end();
}

// Fills a list as the system does: every structure as large as the caller says his are.
template <typename Item, typename Sizes>
DWORD FillList(const Sizes& sizes, const std::vector<Item>& items, Item* place, DWORD* bytes,
               DWORD* count) {
    const DWORD size = place->dwSize;
    if (!Knows(sizes, size)) {
        return ERROR_INVALID_SIZE;
    }
    const auto needed = static_cast<DWORD>(items.size() * size);
    *count = static_cast<DWORD>(items.size());
    if (*bytes < needed) {
        *bytes = needed;
        return ERROR_BUFFER_TOO_SMALL;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        std::memcpy(reinterpret_cast<char*>(place) + i * size, &items[i], size);
    }
    return ERROR_SUCCESS;
}

// Sends what a test has planned, from a thread of its own as the system does.
void Send(HWND window, std::vector<Progress> progress, HRASCONN handle) {
    const UINT message = RegisterWindowMessageA(RASDIALEVENT);
    for (const Progress& step : progress) {
        {
            const Lock lock(FakeRas::Get().mutex);
            const auto connection = FakeRas::Get().connections.find(handle);
            if (connection != FakeRas::Get().connections.end()) {
                connection->second.state = step.state;
            }
        }
        SendMessageW(window, message, step.state, static_cast<LPARAM>(step.error));
    }
}

template <typename Form>
struct Functions {
    using Name = typename RasApi<Form>::Name;
    using Entry = typename Form::Entry;
    static FakeRas& Ras() { return FakeRas::Get(); }

    static DWORD WINAPI EnumEntries(Name, Name, typename Form::EntryName* place, DWORD* bytes,
                                    DWORD* count) {
        const Lock lock(Ras().mutex);
        if (Ras().listError) {
            return Ras().listError;
        }
        std::vector<typename Form::EntryName> names;
        for (const auto& [key, entry] : Ras().entries) {
            names.emplace_back().dwSize = place->dwSize;
            PutRasText(entry.name, names.back().szEntryName);
        }
        return FillList(kRasEntryNameSizes<typename Form::EntryName>, names, place, bytes, count);
    }

    static DWORD WINAPI GetEntry(Name, Name name, Entry* place, DWORD* bytes, BYTE*, DWORD*) {
        const Lock lock(Ras().mutex);
        if (!Knows(kRasEntrySizes<Entry>, place->dwSize)) {
            return ERROR_INVALID_SIZE;
        }
        std::vector<unsigned char> image(place->dwSize);
        if (*name) {
            const FakeEntry* entry = Ras().Find(Wide(name));
            if (!entry) {
                return ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
            }
            image = entry->image;
        }
        if (*bytes < image.size()) {
            *bytes = static_cast<DWORD>(image.size());
            return ERROR_BUFFER_TOO_SMALL;
        }
        const DWORD size = place->dwSize;
        std::memcpy(place, image.data(), image.size());
        place->dwSize = size;
        if (!*name) {
            place->dwfOptions = RASEO_RemoteDefaultGateway;
        }
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI SetEntry(Name, Name name, Entry* entry, DWORD bytes, BYTE*, DWORD) {
        const Lock lock(Ras().mutex);
        if (Ras().setEntryError) {
            return Ras().setEntryError;
        }
        if (!Knows(kRasEntrySizes<Entry>, entry->dwSize) || bytes < entry->dwSize) {
            return ERROR_INVALID_SIZE;
        }
        const auto* first = reinterpret_cast<const unsigned char*>(entry);
        FakeEntry& stored = Ras().entries[LowerCase(Wide(name))];
        stored.name = stored.name.empty() ? Wide(name) : stored.name;
        stored.image.assign(first, first + bytes);
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI ValidateName(Name, Name name) {
        const Lock lock(Ras().mutex);
        const std::wstring wide = Wide(name);
        if (wide.empty() || wide.find(L'/') != std::wstring::npos) {
            return ERROR_INVALID_NAME;
        }
        return Ras().Find(wide) ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    }

    static DWORD WINAPI RenameEntry(Name, Name name, Name newName) {
        const Lock lock(Ras().mutex);
        const DWORD error = ValidateName(nullptr, newName);
        FakeEntry* entry = Ras().Find(Wide(name));
        if (error || !entry) {
            return error ? error : ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
        }
        entry->name = Wide(newName);
        auto node = Ras().entries.extract(LowerCase(Wide(name)));
        node.key() = LowerCase(Wide(newName));
        Ras().entries.insert(std::move(node));
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI DeleteEntry(Name, Name name) {
        const Lock lock(Ras().mutex);
        return Ras().entries.erase(LowerCase(Wide(name))) ? ERROR_SUCCESS
                                                          : ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
    }

    static DWORD WINAPI GetDialParams(Name, typename Form::DialParams* params, BOOL* hasPassword) {
        const Lock lock(Ras().mutex);
        if (!Knows(kRasDialParamsSizes<typename Form::DialParams>, params->dwSize)) {
            return ERROR_INVALID_SIZE;
        }
        const FakeEntry* entry = Ras().Find(FromRasText(params->szEntryName));
        if (!entry) {
            return ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
        }
        PutRasText(entry->userName, params->szUserName);
        PutRasText(entry->domain, params->szDomain);
        PutRasText(entry->password.value_or(L""), params->szPassword);
        *hasPassword = entry->password.has_value();
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI SetDialParams(Name, typename Form::DialParams* params, BOOL remove) {
        const Lock lock(Ras().mutex);
        FakeEntry* entry = Ras().Find(FromRasText(params->szEntryName));
        if (Ras().setCredentialsError || !entry) {
            return entry ? Ras().setCredentialsError : ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
        }
        entry->userName = FromRasText(params->szUserName);
        entry->domain = FromRasText(params->szDomain);
        entry->password = remove ? std::nullopt : std::optional(FromRasText(params->szPassword));
        return ERROR_SUCCESS;
    }

    static constexpr DWORD kIsThisOne = 0x20000001;
    static BOOL CALLBACK IsOther(HWND topLevel, LPARAM window) {
        const bool isOther = topLevel != reinterpret_cast<HWND>(window);
        SetLastError(isOther ? ERROR_SUCCESS : kIsThisOne);
        return isOther;
    }

    static DWORD WINAPI Dial(RASDIALEXTENSIONS*, Name, typename Form::DialParams* params,
                             DWORD notifier, void* window, HRASCONN* connection) {
        const Lock lock(Ras().mutex);
        if (!Ras().Find(FromRasText(params->szEntryName)) || notifier != 0xFFFFFFFF) {
            return ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
        }
        Ras().dialledUser = FromRasText(params->szUserName);
        Ras().dialledPassword = FromRasText(params->szPassword);
        EnumWindows(&IsOther, reinterpret_cast<LPARAM>(window));
        Ras().hearsBroadcasts = GetLastError() == kIsThisOne;
        static ULONG_PTR last = 0x100;
        *connection = reinterpret_cast<HRASCONN>(++last);
        Ras().connections[*connection].entry = FromRasText(params->szEntryName);
        if (!Ras().dialError) {
            Ras().senders.emplace_back(&Send, static_cast<HWND>(window), Ras().progress,
                                       *connection);
        }
        return Ras().dialError;
    }

    static DWORD WINAPI HangUp(HRASCONN handle) {
        const Lock lock(Ras().mutex);
        const auto connection = Ras().connections.find(handle);
        if (connection == Ras().connections.end()) {
            return ERROR_INVALID_HANDLE;
        }
        ++Ras().hangUps;
        connection->second.pollsUntilGone = Ras().pollsUntilGone;
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI EnumConnections(typename Form::Connection* place, DWORD* bytes,
                                        DWORD* count) {
        const Lock lock(Ras().mutex);
        std::vector<typename Form::Connection> items;
        for (const auto& [handle, connection] : Ras().connections) {
            items.emplace_back().dwSize = place->dwSize;
            items.back().hrasconn = handle;
            PutRasText(connection.entry, items.back().szEntryName);
        }
        return FillList(kRasConnectionSizes<typename Form::Connection>, items, place, bytes, count);
    }

    static DWORD WINAPI GetStatus(HRASCONN handle, typename Form::Status* status) {
        const Lock lock(Ras().mutex);
        if (!Knows(kRasStatusSizes<typename Form::Status>, status->dwSize)) {
            return ERROR_INVALID_SIZE;
        }
        const auto connection = Ras().connections.find(handle);
        if (connection == Ras().connections.end()) {
            return ERROR_INVALID_HANDLE;
        }
        int& polls = connection->second.pollsUntilGone;
        if (polls == 0) {
            Ras().connections.erase(connection);
            return ERROR_INVALID_HANDLE;
        }
        polls -= polls > 0;
        status->rasconnstate = static_cast<RASCONNSTATE>(connection->second.state);
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI EnumDevices(typename Form::Device* place, DWORD* bytes, DWORD* count) {
        const Lock lock(Ras().mutex);
        std::vector<typename Form::Device> items;
        for (const auto& [name, type] : Ras().devices) {
            items.emplace_back().dwSize = place->dwSize;
            PutRasText(name, items.back().szDeviceName);
            PutRasText(type, items.back().szDeviceType);
        }
        return FillList(kRasDeviceSizes<typename Form::Device>, items, place, bytes, count);
    }

    static DWORD WINAPI GetErrorText(UINT error, typename Form::Character* text, DWORD size) {
        const auto words =
            ToRasText<typename Form::Character>(L"dial-up error " + std::to_wstring(error));
        std::copy_n(words->c_str(), std::min<std::size_t>(words->size() + 1, size), text);
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI GetCountry(RASCTRYINFO* country, DWORD* bytes) {
        const Lock lock(Ras().mutex);
        const auto found = Ras().countries.find(country->dwCountryID);
        if (found == Ras().countries.end() || *bytes < sizeof(*country)) {
            return ERROR_INVALID_PARAMETER;
        }
        const auto next = std::next(found);
        country->dwCountryCode = found->second;
        country->dwNextCountryID = next == Ras().countries.end() ? 0 : next->first;
        return ERROR_SUCCESS;
    }

    static DWORD WINAPI NotifyConnection(HRASCONN handle, HANDLE event, DWORD) {
        const Lock lock(Ras().mutex);
        const auto connection = Ras().connections.find(handle);
        if (!Ras().canNotify || connection == Ras().connections.end()) {
            return ERROR_INVALID_HANDLE;
        }
        connection->second.endEvent = event;
        return ERROR_SUCCESS;
    }
};

} // namespace

void FakeRas::Reset() {
    for (TestThread& sender : senders) {
        sender.join();
    }
    senders.clear();
    const Lock lock(mutex);
    static_cast<RasState&>(*this) = {};
}

void FakeRas::Drop(const std::wstring& entry) {
    const Lock lock(mutex);
    for (auto connection = connections.begin(); connection != connections.end(); ++connection) {
        if (connection->second.entry == entry) {
            const HANDLE event = connection->second.endEvent;
            connections.erase(connection);
            SetEvent(event);
            return;
        }
    }
}

template <typename Form>
RasApi<Form> FakeRas::Api() {
    using Own = Functions<Form>;
    RasApi<Form> api = RasApi<Form>::Missing();
    api.enumEntries = &Own::EnumEntries;
    api.getEntry = &Own::GetEntry;
    api.setEntry = &Own::SetEntry;
    api.validateName = &Own::ValidateName;
    api.renameEntry = &Own::RenameEntry;
    api.deleteEntry = &Own::DeleteEntry;
    api.getDialParams = &Own::GetDialParams;
    api.setDialParams = &Own::SetDialParams;
    api.dial = &Own::Dial;
    api.hangUp = &Own::HangUp;
    api.enumConnections = &Own::EnumConnections;
    api.getStatus = &Own::GetStatus;
    api.enumDevices = &Own::EnumDevices;
    api.getErrorText = &Own::GetErrorText;
    api.getCountry = &Own::GetCountry;
    api.notifyConnection = &Own::NotifyConnection;
    return api;
}

template RasApi<WideRas> FakeRas::Api<WideRas>();
template RasApi<NarrowRas> FakeRas::Api<NarrowRas>();

} // namespace tervane::test
