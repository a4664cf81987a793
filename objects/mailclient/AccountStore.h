#pragma once

// The accounts of one identity, in the key of the Internet Account Manager that Outlook Express and
// its relatives share: one subkey per account below "Accounts", named by a number, and the names of
// the default ones' subkeys beside it.
//
// Accounts are named by their "Account Name", compared without regard to case. Directory services
// are accounts too; they are not listed, but their names are taken. A change that the registry
// refuses leaves everything as it was.

#include "objects/mailclient/AccountSettings.h"
#include "platform/registry/RegistryKey.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tervane {

// The outcomes of the operations on identities and accounts, as scripts see them.
enum class MailError : long {
    kSuccess = 0,
    kNoAccountStore = 1,
    kUnknownIdentity = 2,
    kUnknownAccount = 3,
    kUnknownSetting = 4,
    kInvalidValue = 5,
    kAccountExists = 6,
    kWriteFailed = 7,
};

constexpr const wchar_t* NameOf(MailError error) noexcept {
    switch (error) {
    case MailError::kSuccess:
        return L"SUCCESS";
    case MailError::kNoAccountStore:
        return L"NO_ACCOUNT_STORE";
    case MailError::kUnknownIdentity:
        return L"UNKNOWN_IDENTITY";
    case MailError::kUnknownAccount:
        return L"UNKNOWN_ACCOUNT";
    case MailError::kUnknownSetting:
        return L"UNKNOWN_SETTING";
    case MailError::kInvalidValue:
        return L"INVALID_VALUE";
    case MailError::kAccountExists:
        return L"ACCOUNT_EXISTS";
    case MailError::kWriteFailed:
        return L"WRITE_FAILED";
    }
    return L"";
}

enum class AccountKind { kMail, kNews };

// By the setting's type: a text, a port or a flag.
using SettingValue = std::variant<std::wstring, unsigned long, bool>;

class AccountStore {
public:
    // `path` is the manager's key below HKEY_CURRENT_USER; it is made with the first account.
    explicit AccountStore(std::wstring path, const RegistryApi& api = RegistryApi::System())
        : path_(std::move(path)), api_(api) {}

    std::vector<std::wstring> Names(AccountKind kind) const;

    struct NewAccount {
        AccountProtocol protocol;
        std::wstring_view name;
        std::wstring_view server;
        std::wstring_view smtpServer; // not for news
        std::wstring_view emailAddress;
    };
    // The identity's first account of a kind becomes the default one.
    MailError Add(const NewAccount& account) const;
    MailError Remove(std::wstring_view name) const;

    // `value` is untouched on failure.
    MailError Read(std::wstring_view name, std::wstring_view setting, SettingValue& value) const;
    // `value` must have the setting's type.
    MailError Write(std::wstring_view name, std::wstring_view setting,
                    const SettingValue& value) const;

    // "" when there is none.
    std::wstring DefaultName(AccountKind kind) const;
    MailError SetDefault(AccountKind kind, std::wstring_view name) const;

private:
    struct Account {
        std::wstring key; // the name of its subkey
        std::wstring name;
        std::optional<AccountProtocol> protocol; // none for directory services

        bool Is(AccountKind kind) const noexcept;
    };

    RegistryKey Open(std::wstring_view below, REGSAM access) const;
    Account Load(const std::wstring& key) const;
    std::vector<Account> All() const;
    // Of mail and news accounts only.
    std::optional<Account> Find(std::wstring_view name) const;
    std::wstring NewKey() const;
    bool Fill(const std::wstring& key, const NewAccount& account) const;
    bool Forget(const std::wstring& below) const;
    DWORD AuthenticationMethod(const RegistryKey& account, bool enabled) const;

    std::wstring path_;
    const RegistryApi& api_;
};

} // namespace tervane
