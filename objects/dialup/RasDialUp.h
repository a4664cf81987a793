#pragma once

// Dial-up networking by the functions of Windows, in their wide or their narrow form.

#include "objects/dialup/DialUp.h"
#include "objects/dialup/RasApi.h"

#include <utility>

namespace tervane {

template <typename Form>
class RasDialUp final : public DialUp {
public:
    // `library` is the one that the functions are from, if they are from one.
    explicit RasDialUp(const RasApi<Form>& api,
                       ZelBase::SystemLibrary library = ZelBase::SystemLibrary())
        : api_(api), library_(std::move(library)) {}

    DWORD Entries(std::vector<std::wstring>& names) const override;
    DWORD CheckNewName(const std::wstring& name) const override;
    DWORD RenameEntry(const std::wstring& name, const std::wstring& newName) const override;
    DWORD DeleteEntry(const std::wstring& name) const override;
    DWORD ReadEntry(const std::wstring& name, EntryImage& image) const override;
    DWORD WriteEntry(const std::wstring& name, const EntryImage& image) const override;
    PhoneBookRecord Decode(const EntryImage& image) const override;
    DWORD Encode(const PhoneBookRecord& record, EntryImage& image) const override;
    DWORD ReadCredentials(const std::wstring& name, DialCredentials& credentials) const override;
    DWORD WriteCredentials(const std::wstring& name, const std::wstring& userName,
                           const std::wstring& domain,
                           const std::optional<ZelBase::WideSecretText>& password) const override;
    DWORD Devices(std::vector<DialDevice>& devices) const override;
    DWORD Connections(std::vector<DialConnection>& connections) const override;
    DWORD State(HRASCONN connection, DWORD& state) const override;
    DWORD Dial(const std::wstring& name, const std::wstring& userName,
               const ZelBase::WideSecretText& password, HWND window,
               HRASCONN& connection) const override;
    DWORD NotifyOfEnd(HRASCONN connection, HANDLE event) const override;
    DWORD StartHangUp(HRASCONN connection) const override;
    std::wstring ErrorText(DWORD error) const override;

private:
    using Character = typename Form::Character;
    class Parameters;

    DWORD ReadParameters(const std::wstring& name, Parameters& parameters) const;
    DWORD FindCountry(DWORD code) const;

    const RasApi<Form> api_;
    const ZelBase::SystemLibrary library_;
};

extern template class RasDialUp<WideRas>;
extern template class RasDialUp<NarrowRas>;

} // namespace tervane
