#pragma once

// One phone-book entry for scripts: a copy that Load reads, the properties change and Save writes.
// It may be used by any thread.

#include "ZelBase/threads/LocalMutex.h"
#include "component/Automation.h"
#include "objects/dialup/DialUp.h"
#include "objects/dialup/PhoneBook.h"

#include <TERVANELib.h>

namespace tervane {

class PhoneBookEntry final : public AutomationObject<IPhoneBookEntry> {
public:
    PhoneBookEntry(const ClassRow& row, IUnknown* outer,
                   std::shared_ptr<const DialUp> dialUp = nullptr)
        : Object(row, outer), dialUp_(std::move(dialUp)) {}

    HRESULT STDMETHODCALLTYPE get_Name(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_Name(BSTR name) override;
    HRESULT STDMETHODCALLTYPE get_PhoneNumber(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_PhoneNumber(BSTR number) override;
    HRESULT STDMETHODCALLTYPE get_AreaCode(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_AreaCode(BSTR code) override;
    HRESULT STDMETHODCALLTYPE get_CountryCode(long* result) override;
    HRESULT STDMETHODCALLTYPE put_CountryCode(long code) override;
    HRESULT STDMETHODCALLTYPE get_UseAreaAndCountryCodes(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE put_UseAreaAndCountryCodes(VARIANT_BOOL use) override;
    HRESULT STDMETHODCALLTYPE get_DeviceName(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_DeviceName(BSTR name) override;
    HRESULT STDMETHODCALLTYPE get_DeviceType(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_DeviceType(BSTR type) override;
    HRESULT STDMETHODCALLTYPE get_UserName(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_UserName(BSTR name) override;
    HRESULT STDMETHODCALLTYPE get_Domain(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_Domain(BSTR domain) override;
    HRESULT STDMETHODCALLTYPE put_Password(BSTR password) override;
    HRESULT STDMETHODCALLTYPE get_HasPassword(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_IpAddress(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_IpAddress(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_PrimaryDnsServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_PrimaryDnsServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_AlternateDnsServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_AlternateDnsServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_PrimaryWinsServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_PrimaryWinsServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_AlternateWinsServer(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE put_AlternateWinsServer(BSTR address) override;
    HRESULT STDMETHODCALLTYPE get_UseRemoteDefaultGateway(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE put_UseRemoteDefaultGateway(VARIANT_BOOL use) override;
    HRESULT STDMETHODCALLTYPE get_IpHeaderCompression(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE put_IpHeaderCompression(VARIANT_BOOL use) override;
    HRESULT STDMETHODCALLTYPE Load(BSTR entry, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE Save(VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* result) override;

    // Load for code that needs the error.
    DWORD LoadEntry(const std::wstring& name);

private:
    // `field` finds a text, an address or a flag in the draft.
    template <typename Field>
    HRESULT GetText(BSTR* result, Field field) noexcept;
    template <typename Text = std::wstring, typename Field>
    HRESULT PutText(BSTR text, std::size_t longest, Field field) noexcept;
    HRESULT GetAddress(BSTR* result, Ipv4Bytes PhoneBookRecord::*address) noexcept;
    HRESULT PutAddress(BSTR text, Ipv4Bytes PhoneBookRecord::*address) noexcept;
    HRESULT GetFlag(VARIANT_BOOL* result, bool PhoneBookRecord::*flag) noexcept;
    HRESULT PutFlag(VARIANT_BOOL truth, bool PhoneBookRecord::*flag) noexcept;

    LazyDialUp dialUp_;
    ZelBase::LocalMutex lock_;
    PhoneBookDraft draft_ ZELBASE_GUARDED_BY(lock_);
    DWORD lastError_ ZELBASE_GUARDED_BY(lock_) = ERROR_SUCCESS;
};

} // namespace tervane
