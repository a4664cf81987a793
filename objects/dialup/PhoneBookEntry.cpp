#include "objects/dialup/PhoneBookEntry.h"

#include "component/Answers.h"
#include "objects/Classes.h"

namespace tervane {
namespace {

constexpr long kHighestCountryCode = 9999;

using Lock = ZelBase::LocalMutexLock;

} // namespace

template <typename Field>
HRESULT PhoneBookEntry::GetText(BSTR* result, Field field) noexcept {
    return AnswerText(result, [&]() -> std::wstring {
        const Lock lock(lock_);
        return field(draft_);
    });
}

template <typename Text, typename Field>
HRESULT PhoneBookEntry::PutText(BSTR text, std::size_t longest, Field field) noexcept {
    return Guarded([&] {
        Text copy(TextOf(text));
        const Lock lock(lock_);
        lastError_ = FitsEntry(TextOf(text), longest) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
        if (lastError_ == ERROR_SUCCESS) {
            field(draft_) = std::move(copy);
        }
        return S_OK;
    });
}

HRESULT PhoneBookEntry::GetAddress(BSTR* result, Ipv4Bytes PhoneBookRecord::*address) noexcept {
    return AnswerText(result, [&] {
        const Lock lock(lock_);
        return Ipv4Text(draft_.record.*address);
    });
}

HRESULT PhoneBookEntry::PutAddress(BSTR text, Ipv4Bytes PhoneBookRecord::*address) noexcept {
    const std::optional<Ipv4Bytes> parsed = ParseIpv4(TextOf(text));
    const Lock lock(lock_);
    lastError_ = parsed ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    if (parsed) {
        draft_.record.*address = *parsed;
    }
    return S_OK;
}

HRESULT PhoneBookEntry::GetFlag(VARIANT_BOOL* result, bool PhoneBookRecord::*flag) noexcept {
    return AnswerFlag(result, [&] {
        const Lock lock(lock_);
        return draft_.record.*flag;
    });
}

HRESULT PhoneBookEntry::PutFlag(VARIANT_BOOL truth, bool PhoneBookRecord::*flag) noexcept {
    const Lock lock(lock_);
    draft_.record.*flag = truth != VARIANT_FALSE;
    lastError_ = ERROR_SUCCESS;
    return S_OK;
}

HRESULT PhoneBookEntry::get_Name(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.name; });
}

HRESULT PhoneBookEntry::put_Name(BSTR name) {
    return PutText(
        name, RAS_MaxEntryName, [](auto& draft) -> auto& { return draft.name; });
}

HRESULT PhoneBookEntry::get_PhoneNumber(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.record.phoneNumber; });
}

HRESULT PhoneBookEntry::put_PhoneNumber(BSTR number) {
    return PutText(
        number, RAS_MaxPhoneNumber, [](auto& draft) -> auto& { return draft.record.phoneNumber; });
}

HRESULT PhoneBookEntry::get_AreaCode(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.record.areaCode; });
}

HRESULT PhoneBookEntry::put_AreaCode(BSTR code) {
    return PutText(
        code, RAS_MaxAreaCode, [](auto& draft) -> auto& { return draft.record.areaCode; });
}

HRESULT PhoneBookEntry::get_CountryCode(long* result) {
    return AnswerNumber(result, [&] {
        const Lock lock(lock_);
        return draft_.record.countryCode;
    });
}

HRESULT PhoneBookEntry::put_CountryCode(long code) {
    const bool isCode = code >= 0 && code <= kHighestCountryCode;
    const Lock lock(lock_);
    lastError_ = isCode ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    if (isCode) {
        draft_.record.countryCode = static_cast<unsigned long>(code);
    }
    return S_OK;
}

HRESULT PhoneBookEntry::get_UseAreaAndCountryCodes(VARIANT_BOOL* result) {
    return GetFlag(result, &PhoneBookRecord::usesAreaAndCountryCodes);
}

HRESULT PhoneBookEntry::put_UseAreaAndCountryCodes(VARIANT_BOOL use) {
    return PutFlag(use, &PhoneBookRecord::usesAreaAndCountryCodes);
}

HRESULT PhoneBookEntry::get_DeviceName(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.record.deviceName; });
}

HRESULT PhoneBookEntry::put_DeviceName(BSTR name) {
    return PutText(
        name, RAS_MaxDeviceName, [](auto& draft) -> auto& { return draft.record.deviceName; });
}

HRESULT PhoneBookEntry::get_DeviceType(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.record.deviceType; });
}

HRESULT PhoneBookEntry::put_DeviceType(BSTR type) {
    return PutText(
        type, RAS_MaxDeviceType, [](auto& draft) -> auto& { return draft.record.deviceType; });
}

HRESULT PhoneBookEntry::get_UserName(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.credentials.userName; });
}

HRESULT PhoneBookEntry::put_UserName(BSTR name) {
    return PutText(
        name, UNLEN, [](auto& draft) -> auto& { return draft.credentials.userName; });
}

HRESULT PhoneBookEntry::get_Domain(BSTR* result) {
    return GetText(result, [](auto& draft) { return draft.credentials.domain; });
}

HRESULT PhoneBookEntry::put_Domain(BSTR domain) {
    return PutText(
        domain, DNLEN, [](auto& draft) -> auto& { return draft.credentials.domain; });
}

HRESULT PhoneBookEntry::put_Password(BSTR password) {
    return PutText<ZelBase::WideSecretText>(
        password, PWLEN, [](auto& draft) -> auto& { return draft.newPassword; });
}

HRESULT PhoneBookEntry::get_HasPassword(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        const Lock lock(lock_);
        return draft_.credentials.hasPassword;
    });
}

HRESULT PhoneBookEntry::get_IpAddress(BSTR* result) {
    return GetAddress(result, &PhoneBookRecord::address);
}

HRESULT PhoneBookEntry::put_IpAddress(BSTR address) {
    return PutAddress(address, &PhoneBookRecord::address);
}

HRESULT PhoneBookEntry::get_PrimaryDnsServer(BSTR* result) {
    return GetAddress(result, &PhoneBookRecord::dns);
}

HRESULT PhoneBookEntry::put_PrimaryDnsServer(BSTR address) {
    return PutAddress(address, &PhoneBookRecord::dns);
}

HRESULT PhoneBookEntry::get_AlternateDnsServer(BSTR* result) {
    return GetAddress(result, &PhoneBookRecord::alternateDns);
}

HRESULT PhoneBookEntry::put_AlternateDnsServer(BSTR address) {
    return PutAddress(address, &PhoneBookRecord::alternateDns);
}

HRESULT PhoneBookEntry::get_PrimaryWinsServer(BSTR* result) {
    return GetAddress(result, &PhoneBookRecord::wins);
}

HRESULT PhoneBookEntry::put_PrimaryWinsServer(BSTR address) {
    return PutAddress(address, &PhoneBookRecord::wins);
}

HRESULT PhoneBookEntry::get_AlternateWinsServer(BSTR* result) {
    return GetAddress(result, &PhoneBookRecord::alternateWins);
}

HRESULT PhoneBookEntry::put_AlternateWinsServer(BSTR address) {
    return PutAddress(address, &PhoneBookRecord::alternateWins);
}

HRESULT PhoneBookEntry::get_UseRemoteDefaultGateway(VARIANT_BOOL* result) {
    return GetFlag(result, &PhoneBookRecord::usesRemoteGateway);
}

HRESULT PhoneBookEntry::put_UseRemoteDefaultGateway(VARIANT_BOOL use) {
    return PutFlag(use, &PhoneBookRecord::usesRemoteGateway);
}

HRESULT PhoneBookEntry::get_IpHeaderCompression(VARIANT_BOOL* result) {
    return GetFlag(result, &PhoneBookRecord::compressesHeaders);
}

HRESULT PhoneBookEntry::put_IpHeaderCompression(VARIANT_BOOL use) {
    return PutFlag(use, &PhoneBookRecord::compressesHeaders);
}

DWORD PhoneBookEntry::LoadEntry(const std::wstring& name) {
    const PhoneBook phoneBook(dialUp_.Get());
    const Lock lock(lock_);
    lastError_ = phoneBook.Load(name, draft_);
    return lastError_;
}

HRESULT PhoneBookEntry::Load(BSTR entry, VARIANT_BOOL* result) {
    return AnswerFlag(result,
                      [&] { return LoadEntry(std::wstring(TextOf(entry))) == ERROR_SUCCESS; });
}

HRESULT PhoneBookEntry::Save(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        const PhoneBook phoneBook(dialUp_.Get());
        const Lock lock(lock_);
        lastError_ = phoneBook.Save(draft_);
        return lastError_ == ERROR_SUCCESS;
    });
}

HRESULT PhoneBookEntry::get_LastError(BSTR* result) {
    return AnswerText(result, [&] {
        const Lock lock(lock_);
        return dialUp_.Get()->ErrorText(lastError_);
    });
}

HRESULT PhoneBookEntry::get_LastErrorCode(long* result) {
    return AnswerNumber(result, [&] {
        const Lock lock(lock_);
        return lastError_;
    });
}

namespace create {

HRESULT PhoneBookEntry(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::PhoneBookEntry>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
