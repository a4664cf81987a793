#pragma once

// The identities of Outlook Express: several people who share one Windows user, each with accounts
// of his own. The first one, made by the setup, keeps its accounts where versions without
// identities had theirs; the others have a registry branch of their own.

#include "objects/mailclient/AccountStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

class MailIdentities {
public:
    explicit MailIdentities(const RegistryApi& api = RegistryApi::System()) : api_(api) {}

    // In the order in which they were made.
    std::vector<std::wstring> Names() const;
    // The one that uses the mail client now, or used it last; "" when there are none.
    std::wstring CurrentName() const;
    // Whether the mail client has been set up for this user, with identities or without.
    bool AreSetUp() const;

    // The accounts of an identity by its name in any case, "" for the current one. On failure the
    // error tells why.
    std::optional<AccountStore> Accounts(std::wstring_view name, MailError& error) const;

private:
    struct Identity {
        std::wstring key; // a GUID in braces
        std::wstring name;
        std::optional<DWORD> ordinal; // from 1, in the order of making
    };

    std::vector<Identity> All() const;
    const Identity* FindCurrent(const std::vector<Identity>& identities) const;
    std::wstring StoreOf(const Identity& identity) const;

    const RegistryApi& api_;
};

} // namespace tervane
