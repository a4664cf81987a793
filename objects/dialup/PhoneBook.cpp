#include "objects/dialup/PhoneBook.h"

#include "platform/text/LetterCase.h"

#include <raserror.h>

#include <algorithm>

namespace tervane {
namespace {

bool SameName(std::wstring_view one, std::wstring_view other) {
    return LowerCase(one) == LowerCase(other);
}

// A user without any entry may have no phone book yet; the first entry makes it.
bool IsWithoutPhoneBook(DWORD error) noexcept {
    return error == ERROR_CANNOT_OPEN_PHONEBOOK;
}

} // namespace

bool FitsEntry(std::wstring_view text, std::size_t longest) noexcept {
    return text.size() <= longest && std::none_of(text.begin(), text.end(), [](wchar_t letter) {
               return letter < L' ' || letter == 0x7F;
           });
}

DWORD PhoneBook::List(std::vector<std::wstring>& names) const {
    const DWORD error = dialUp_->Entries(names);
    return IsWithoutPhoneBook(error) ? static_cast<DWORD>(ERROR_SUCCESS) : error;
}

DWORD PhoneBook::Exists(const std::wstring& name, bool& exists) const {
    std::vector<std::wstring> names;
    const DWORD error = List(names);
    exists = std::any_of(names.begin(), names.end(),
                         [&name](const std::wstring& entry) { return SameName(entry, name); });
    return error;
}

DWORD PhoneBook::FindDevice(const std::wstring& name, DialDevice& device) const {
    std::vector<DialDevice> devices;
    const DWORD error = dialUp_->Devices(devices);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    auto found = std::find_if(devices.begin(), devices.end(), [&name](const DialDevice& candidate) {
        return name.empty() ? EqualsIgnoringAsciiCase(candidate.type, L"modem")
                            : SameName(candidate.name, name);
    });
    if (found == devices.end() && name.empty()) {
        found = devices.begin();
    }
    if (found == devices.end()) {
        return ERROR_DEVICE_DOES_NOT_EXIST;
    }
    device = std::move(*found);
    return ERROR_SUCCESS;
}

DWORD PhoneBook::Create(const std::wstring& name, const std::wstring& phoneNumber,
                        const std::wstring& deviceName) const {
    if (!FitsEntry(phoneNumber, RAS_MaxPhoneNumber)) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD error = dialUp_->CheckNewName(name);
    if (error != ERROR_SUCCESS && !IsWithoutPhoneBook(error)) {
        return error;
    }
    DialDevice device;
    EntryImage image;
    error = FindDevice(deviceName, device);
    if (error == ERROR_SUCCESS) {
        error = dialUp_->ReadEntry(L"", image);
    }
    if (error != ERROR_SUCCESS) {
        return error;
    }
    PhoneBookRecord record = dialUp_->Decode(image);
    record.phoneNumber = phoneNumber;
    record.deviceName = device.name;
    record.deviceType = device.type;
    error = dialUp_->Encode(record, image);
    return error == ERROR_SUCCESS ? dialUp_->WriteEntry(name, image) : error;
}

DWORD PhoneBook::Load(const std::wstring& name, PhoneBookDraft& draft) const {
    // The empty name would read what new entries start from.
    EntryImage image;
    DWORD error = name.empty() ? static_cast<DWORD>(ERROR_CANNOT_FIND_PHONEBOOK_ENTRY)
                               : dialUp_->ReadEntry(name, image);
    DialCredentials credentials;
    if (error == ERROR_SUCCESS) {
        error = dialUp_->ReadCredentials(name, credentials);
    }
    if (error == ERROR_SUCCESS) {
        draft = {name, dialUp_->Decode(image), std::move(credentials), std::nullopt};
    }
    return error;
}

// The entry's image, or what a new one starts from.
DWORD PhoneBook::ReadOrBegin(const std::wstring& name, EntryImage& image, bool& exists) const {
    DWORD error = Exists(name, exists);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    if (exists) {
        return dialUp_->ReadEntry(name, image);
    }
    error = dialUp_->CheckNewName(name);
    return error == ERROR_SUCCESS || IsWithoutPhoneBook(error) ? dialUp_->ReadEntry(L"", image)
                                                               : error;
}

DWORD PhoneBook::SaveCredentials(const PhoneBookDraft& draft, bool& hasPassword) const {
    DialCredentials stored;
    const DWORD error = dialUp_->ReadCredentials(draft.name, stored);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    hasPassword = draft.newPassword ? !draft.newPassword->IsEmpty() : stored.hasPassword;
    if (!draft.newPassword && stored.userName == draft.credentials.userName &&
        stored.domain == draft.credentials.domain) {
        return ERROR_SUCCESS;
    }
    return dialUp_->WriteCredentials(draft.name, draft.credentials.userName,
                                     draft.credentials.domain, draft.newPassword);
}

DWORD PhoneBook::Save(PhoneBookDraft& draft) const {
    EntryImage before;
    bool exists = false;
    DWORD error = ReadOrBegin(draft.name, before, exists);
    EntryImage image = before;
    if (error == ERROR_SUCCESS) {
        error = dialUp_->Encode(draft.record, image);
    }
    if (error == ERROR_SUCCESS) {
        error = dialUp_->WriteEntry(draft.name, image);
    }
    if (error != ERROR_SUCCESS) {
        return error;
    }
    bool hasPassword = false;
    error = SaveCredentials(draft, hasPassword);
    if (error != ERROR_SUCCESS) {
        exists ? dialUp_->WriteEntry(draft.name, before) : dialUp_->DeleteEntry(draft.name);
        return error;
    }
    draft.credentials.hasPassword = hasPassword;
    draft.newPassword.reset();
    return ERROR_SUCCESS;
}

} // namespace tervane
