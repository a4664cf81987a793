#pragma once

// Dial-up networking as the rest of the room sees it: the default phone book with its entries and
// their credentials, the devices, the connections. Names and texts are wide whatever the system
// has. Results are the system's error numbers, 0 for success; on failure out-values are untouched.
//
// All members can be called by any thread.

#include "ZelBase/text/SecretText.h"
#include "ZelBase/threads/LocalMutex.h"
#include "objects/dialup/Ipv4Text.h"

#include <windows.h>

#include <ras.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tervane {

// What scripts see and change of a phone-book entry, apart from its name and its credentials.
struct PhoneBookRecord {
    std::wstring phoneNumber;
    std::wstring areaCode;
    unsigned long countryCode = 0; // the international dialling code
    bool usesAreaAndCountryCodes = false;
    std::wstring deviceName;
    std::wstring deviceType;
    // None: left to the server that is dialled.
    Ipv4Bytes address = {};
    Ipv4Bytes dns = {};
    Ipv4Bytes alternateDns = {};
    Ipv4Bytes wins = {};
    Ipv4Bytes alternateWins = {};
    bool usesRemoteGateway = true;
    bool compressesHeaders = true;
};

struct DialDevice {
    std::wstring name;
    std::wstring type; // the system's word: "modem", "isdn", "vpn"
};

struct DialConnection {
    HRASCONN handle;
    std::wstring entry;
};

struct DialCredentials {
    std::wstring userName;
    std::wstring domain;
    bool hasPassword = false;
};

// An entry with everything that the system stores of it, in the system's own form.
using EntryImage = std::vector<std::byte>;

class DialUp {
public:
    virtual ~DialUp() = default;

    // That of this system. Where it has none, every operation returns ERROR_MOD_NOT_FOUND.
    static std::shared_ptr<const DialUp> System();

    virtual DWORD Entries(std::vector<std::wstring>& names) const = 0;
    // Whether a new entry can have that name; ERROR_ALREADY_EXISTS when there is one.
    virtual DWORD CheckNewName(const std::wstring& name) const = 0;
    virtual DWORD RenameEntry(const std::wstring& name, const std::wstring& newName) const = 0;
    virtual DWORD DeleteEntry(const std::wstring& name) const = 0;

    // The empty name reads what a new entry starts from.
    virtual DWORD ReadEntry(const std::wstring& name, EntryImage& image) const = 0;
    // Creates the entry or replaces it as a whole.
    virtual DWORD WriteEntry(const std::wstring& name, const EntryImage& image) const = 0;
    virtual PhoneBookRecord Decode(const EntryImage& image) const = 0;
    // Puts the record into an image and leaves everything else in it as it is.
    virtual DWORD Encode(const PhoneBookRecord& record, EntryImage& image) const = 0;

    virtual DWORD ReadCredentials(const std::wstring& name, DialCredentials& credentials) const = 0;
    // Without `password` the stored one is kept; an empty one removes it.
    virtual DWORD
    WriteCredentials(const std::wstring& name, const std::wstring& userName,
                     const std::wstring& domain,
                     const std::optional<ZelBase::WideSecretText>& password) const = 0;

    virtual DWORD Devices(std::vector<DialDevice>& devices) const = 0;
    // Those that are being made included.
    virtual DWORD Connections(std::vector<DialConnection>& connections) const = 0;
    // ERROR_INVALID_HANDLE when the connection is gone.
    virtual DWORD State(HRASCONN connection, DWORD& state) const = 0;

    // Starts dialling with the stored credentials in place of empty ones and returns; the window is
    // told of each state by the message RASDIALEVENT (wParam the state, lParam the error). A
    // connection is to be hung up even when dialling it fails; null when there is none.
    virtual DWORD Dial(const std::wstring& name, const std::wstring& userName,
                       const ZelBase::WideSecretText& password, HWND window,
                       HRASCONN& connection) const = 0;
    // Signals the event when the connection ends. Not every system can.
    virtual DWORD NotifyOfEnd(HRASCONN connection, HANDLE event) const = 0;
    // Returns before the connection is gone; see HangUp.h.
    virtual DWORD StartHangUp(HRASCONN connection) const = 0;

    // The system's text for an error number, dial-up errors included; "" for 0.
    virtual std::wstring ErrorText(DWORD error) const = 0;
};

// The system's dial-up networking, loaded when it is first used: most objects are made for a moment
// and never come to it. Any thread.
class LazyDialUp {
public:
    // One that is given is used in the place of the system's.
    explicit LazyDialUp(std::shared_ptr<const DialUp> given = nullptr)
        : dialUp_(std::move(given)) {}

    std::shared_ptr<const DialUp> Get();

private:
    ZelBase::LocalMutex lock_;
    std::shared_ptr<const DialUp> dialUp_ ZELBASE_GUARDED_BY(lock_);
};

} // namespace tervane
