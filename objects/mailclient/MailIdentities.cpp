#include "objects/mailclient/MailIdentities.h"

#include "platform/text/LetterCase.h"

#include <algorithm>
#include <limits>

namespace tervane {
namespace {

constexpr wchar_t kIdentities[] = L"Identities";
constexpr wchar_t kManager[] = L"Software\\Microsoft\\Internet Account Manager";
constexpr DWORD kFirstOrdinal = 1;

bool Exists(const std::wstring& path, const RegistryApi& api) {
    return RegistryKey::Open(RegistryHive::kCurrentUser, path, KEY_QUERY_VALUE, api).IsOpen();
}

} // namespace

std::vector<MailIdentities::Identity> MailIdentities::All() const {
    std::vector<Identity> identities;
    const RegistryKey root =
        RegistryKey::Open(RegistryHive::kCurrentUser, kIdentities, KEY_READ, api_);
    for (const std::wstring& key : root.SubKeyNames()) {
        const RegistryKey identity = root.OpenSubKey(key, KEY_QUERY_VALUE);
        std::wstring name = identity.ReadText(L"Username").value_or(L"");
        if (!name.empty()) {
            identities.push_back({key, std::move(name), identity.ReadNumber(L"Identity Ordinal")});
        }
    }
    std::stable_sort(identities.begin(), identities.end(), [](const auto& one, const auto& other) {
        constexpr DWORD kLast = std::numeric_limits<DWORD>::max();
        return one.ordinal.value_or(kLast) < other.ordinal.value_or(kLast);
    });
    return identities;
}

const MailIdentities::Identity*
MailIdentities::FindCurrent(const std::vector<Identity>& identities) const {
    const RegistryKey root =
        RegistryKey::Open(RegistryHive::kCurrentUser, kIdentities, KEY_QUERY_VALUE, api_);
    for (const wchar_t* choice : {L"Last User ID", L"Default User ID"}) {
        const std::wstring key = root.ReadText(choice).value_or(L"");
        const auto found =
            std::find_if(identities.begin(), identities.end(), [&key](const Identity& identity) {
                return EqualsIgnoringAsciiCase(identity.key, key);
            });
        if (found != identities.end()) {
            return &*found;
        }
    }
    return identities.empty() ? nullptr : &identities.front();
}

std::vector<std::wstring> MailIdentities::Names() const {
    std::vector<std::wstring> names;
    for (Identity& identity : All()) {
        names.push_back(std::move(identity.name));
    }
    return names;
}

std::wstring MailIdentities::CurrentName() const {
    const std::vector<Identity> identities = All();
    const Identity* current = FindCurrent(identities);
    return current ? current->name : std::wstring();
}

bool MailIdentities::AreSetUp() const {
    return Exists(kManager, api_) || !All().empty();
}

std::wstring MailIdentities::StoreOf(const Identity& identity) const {
    std::wstring own = std::wstring(kIdentities) + L"\\" + identity.key + L"\\" + kManager;
    const bool isFirst = identity.ordinal.value_or(kFirstOrdinal) == kFirstOrdinal;
    return isFirst && !Exists(own + L"\\Accounts", api_) ? kManager : own;
}

std::optional<AccountStore> MailIdentities::Accounts(std::wstring_view name,
                                                     MailError& error) const {
    const std::vector<Identity> identities = All();
    const Identity* identity = nullptr;
    if (name.empty()) {
        identity = FindCurrent(identities);
    } else {
        const std::wstring sought = LowerCase(name);
        for (const Identity& candidate : identities) {
            if (!identity && LowerCase(candidate.name) == sought) {
                identity = &candidate;
            }
        }
    }
    error = MailError::kSuccess;
    if (identity) {
        return AccountStore(StoreOf(*identity), api_);
    }
    // Without identities there is one nameless one.
    if (name.empty() && Exists(kManager, api_)) {
        return AccountStore(kManager, api_);
    }
    error = AreSetUp() ? MailError::kUnknownIdentity : MailError::kNoAccountStore;
    return std::nullopt;
}

} // namespace tervane
