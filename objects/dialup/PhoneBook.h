#pragma once

// The operations on phone-book entries that take several steps. One that fails half-way puts back
// what it has done. Results are the system's error numbers, 0 for success.

#include "ZelBase/text/SecretText.h"
#include "objects/dialup/DialUp.h"

#include <memory>
#include <optional>
#include <string>

namespace tervane {

// An entry as a script holds it.
struct PhoneBookDraft {
    std::wstring name;
    PhoneBookRecord record;
    DialCredentials credentials;
    // The one put since the entry was read; "" is to remove the stored one.
    std::optional<ZelBase::WideSecretText> newPassword;
};

class PhoneBook {
public:
    explicit PhoneBook(std::shared_ptr<const DialUp> dialUp) : dialUp_(std::move(dialUp)) {}

    // All entries; none, and no error, when there is no phone book yet.
    DWORD List(std::vector<std::wstring>& names) const;
    // Whether there is an entry of that name, in any case.
    DWORD Exists(const std::wstring& name, bool& exists) const;

    // ERROR_ALREADY_EXISTS when there is one of that name. An empty device name stands for the
    // first modem, or for the first device when there is no modem; ERROR_DEVICE_DOES_NOT_EXIST when
    // there is no such device; ERROR_INVALID_PARAMETER for a number that does not fit.
    DWORD Create(const std::wstring& name, const std::wstring& phoneNumber,
                 const std::wstring& deviceName) const;

    // `draft` is untouched on failure.
    DWORD Load(const std::wstring& name, PhoneBookDraft& draft) const;

    // Creates the entry when there is none of that name. Afterwards the draft has no new password
    // any more, and tells whether one is stored with the entry of its name.
    DWORD Save(PhoneBookDraft& draft) const;

private:
    DWORD FindDevice(const std::wstring& name, DialDevice& device) const;
    DWORD ReadOrBegin(const std::wstring& name, EntryImage& image, bool& exists) const;
    DWORD SaveCredentials(const PhoneBookDraft& draft, bool& hasPassword) const;

    std::shared_ptr<const DialUp> dialUp_;
};

// What fits into an entry. The system's structures have room for so many characters; a name or a
// text with control characters is none.
bool FitsEntry(std::wstring_view text, std::size_t longest) noexcept;

} // namespace tervane
