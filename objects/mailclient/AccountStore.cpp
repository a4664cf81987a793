#include "objects/mailclient/AccountStore.h"

#include "platform/text/LetterCase.h"

#include <algorithm>

namespace tervane {
namespace {

constexpr wchar_t kAccounts[] = L"Accounts";
// Of an account its name; of the manager the number of the next account.
constexpr wchar_t kAccountName[] = L"Account Name";
constexpr wchar_t kConnectionType[] = L"Connection Type";
// Whatever connection the browser uses.
constexpr DWORD kAnyConnection = 3;
// Whether and how to log in to the SMTP server.
constexpr wchar_t kSmtpLogin[] = L"SMTP User Name";
constexpr DWORD kNoLogin = 0;
constexpr DWORD kLoginOfIncomingServer = 2;
constexpr DWORD kOwnLogin = 3;

constexpr unsigned long kHighestPort = 65'535;

const wchar_t* DefaultValueOf(AccountKind kind) noexcept {
    return kind == AccountKind::kMail ? L"Default Mail Account" : L"Default News Account";
}

bool SameName(std::wstring_view one, std::wstring_view other) {
    return LowerCase(one) == LowerCase(other);
}

std::optional<AccountProtocol> ProtocolOf(const RegistryKey& account) {
    for (const AccountProtocol protocol : {AccountProtocol::kNews, AccountProtocol::kPop3,
                                           AccountProtocol::kImap, AccountProtocol::kHttp}) {
        if (!account.ReadText(ServerValueOf(protocol)).value_or(L"").empty()) {
            return protocol;
        }
    }
    return std::nullopt;
}

bool IsValid(const AccountSetting& setting, const SettingValue& value) {
    if (const auto* text = std::get_if<std::wstring>(&value)) {
        return setting.type == SettingType::kText && IsSettingText(*text) &&
               !(setting.isRequired && text->empty());
    }
    if (const auto* port = std::get_if<unsigned long>(&value)) {
        return setting.type == SettingType::kPort && *port >= 1 && *port <= kHighestPort;
    }
    return setting.type == SettingType::kFlag;
}

} // namespace

bool AccountStore::Account::Is(AccountKind kind) const noexcept {
    return protocol && (*protocol == AccountProtocol::kNews) == (kind == AccountKind::kNews);
}

RegistryKey AccountStore::Open(std::wstring_view below, REGSAM access) const {
    return RegistryKey::Open(RegistryHive::kCurrentUser, path_ + std::wstring(below), access, api_);
}

AccountStore::Account AccountStore::Load(const std::wstring& key) const {
    const RegistryKey account = Open(L"\\Accounts\\" + key, KEY_QUERY_VALUE);
    return {key, account.ReadText(kAccountName).value_or(L""), ProtocolOf(account)};
}

std::vector<AccountStore::Account> AccountStore::All() const {
    std::vector<Account> accounts;
    for (const std::wstring& key : Open(L"\\Accounts", KEY_ENUMERATE_SUB_KEYS).SubKeyNames()) {
        accounts.push_back(Load(key));
    }
    return accounts;
}

std::optional<AccountStore::Account> AccountStore::Find(std::wstring_view name) const {
    const std::wstring sought = LowerCase(name);
    for (Account& account : All()) {
        if (account.protocol && LowerCase(account.name) == sought) {
            return std::move(account);
        }
    }
    return std::nullopt;
}

std::vector<std::wstring> AccountStore::Names(AccountKind kind) const {
    std::vector<std::wstring> names;
    for (Account& account : All()) {
        if (account.Is(kind)) {
            names.push_back(std::move(account.name));
        }
    }
    return names;
}

// The manager's counter may lag behind when other programs added accounts.
std::wstring AccountStore::NewKey() const {
    const RegistryKey manager = RegistryKey::Create(RegistryHive::kCurrentUser, path_,
                                                    KEY_QUERY_VALUE | KEY_SET_VALUE, api_);
    for (DWORD number = manager.ReadNumber(kAccountName).value_or(1);; ++number) {
        std::wstring key = HexText(number, 8);
        if (!Open(L"\\Accounts\\" + key, KEY_QUERY_VALUE).IsOpen()) {
            return manager.WriteNumber(kAccountName, number + 1) ? key : L"";
        }
    }
}

bool AccountStore::Fill(const std::wstring& key, const NewAccount& account) const {
    const RegistryKey filled = RegistryKey::Create(
        RegistryHive::kCurrentUser, path_ + L"\\" + kAccounts + L"\\" + key, KEY_SET_VALUE, api_);
    const bool isNews = account.protocol == AccountProtocol::kNews;
    const std::wstring address = FindAccountSetting(L"EmailAddress")->ValueFor(account.protocol);
    return filled.WriteText(kAccountName, account.name) &&
           filled.WriteNumber(kConnectionType, kAnyConnection) &&
           filled.WriteText(address, account.emailAddress) &&
           (isNews || filled.WriteText(L"SMTP Server", account.smtpServer)) &&
           // What makes it an account, last.
           filled.WriteText(ServerValueOf(account.protocol), account.server);
}

MailError AccountStore::Add(const NewAccount& account) const {
    const bool isNews = account.protocol == AccountProtocol::kNews;
    const auto isBad = [](std::wstring_view text) { return text.empty() || !IsSettingText(text); };
    if (!IsAccountName(account.name) || isBad(account.server) || isBad(account.emailAddress) ||
        (!isNews && isBad(account.smtpServer))) {
        return MailError::kInvalidValue;
    }
    const std::vector<Account> others = All();
    if (std::any_of(others.begin(), others.end(),
                    [&](const Account& other) { return SameName(other.name, account.name); })) {
        return MailError::kAccountExists;
    }
    const AccountKind kind = isNews ? AccountKind::kNews : AccountKind::kMail;
    const bool isFirst = std::none_of(others.begin(), others.end(),
                                      [kind](const Account& other) { return other.Is(kind); });
    const std::wstring key = NewKey();
    if (key.empty()) {
        return MailError::kWriteFailed;
    }
    if (!Fill(key, account) ||
        (isFirst && !Open(L"", KEY_SET_VALUE).WriteText(DefaultValueOf(kind), key))) {
        Forget(L"\\Accounts\\" + key);
        return MailError::kWriteFailed;
    }
    return MailError::kSuccess;
}

bool AccountStore::Forget(const std::wstring& below) const {
    for (const std::wstring& name : Open(below, KEY_ENUMERATE_SUB_KEYS).SubKeyNames()) {
        if (!Forget(below + L"\\" + name)) {
            return false;
        }
    }
    return RegistryKey::Delete(RegistryHive::kCurrentUser, path_ + below, api_);
}

MailError AccountStore::Remove(std::wstring_view name) const {
    const std::optional<Account> account = Find(name);
    if (!account) {
        return MailError::kUnknownAccount;
    }
    const RegistryKey manager = Open(L"", KEY_QUERY_VALUE);
    std::vector<const wchar_t*> defaults;
    for (const AccountKind kind : {AccountKind::kMail, AccountKind::kNews}) {
        if (SameName(manager.ReadText(DefaultValueOf(kind)).value_or(L""), account->key)) {
            defaults.push_back(DefaultValueOf(kind));
        }
    }
    // First, so that no default names an account that is gone.
    const RegistryKey changed = Open(L"", KEY_SET_VALUE);
    const bool isNoDefault =
        std::all_of(defaults.begin(), defaults.end(),
                    [&changed](const wchar_t* name) { return changed.DeleteValue(name); });
    if (isNoDefault && Forget(L"\\Accounts\\" + account->key)) {
        return MailError::kSuccess;
    }
    for (const wchar_t* value : defaults) {
        changed.WriteText(value, account->key);
    }
    return MailError::kWriteFailed;
}

MailError AccountStore::Read(std::wstring_view name, std::wstring_view setting,
                             SettingValue& value) const {
    const AccountSetting* known = FindAccountSetting(setting);
    const std::optional<Account> account = Find(name);
    if (!account) {
        return MailError::kUnknownAccount;
    }
    if (!known || !known->BelongsTo(*account->protocol)) {
        return MailError::kUnknownSetting;
    }
    const RegistryKey key = Open(L"\\Accounts\\" + account->key, KEY_QUERY_VALUE);
    const std::wstring stored = known->ValueFor(*account->protocol);
    switch (known->type) {
    case SettingType::kText:
        value = key.ReadText(stored).value_or(L"");
        break;
    case SettingType::kPort:
        value = key.ReadNumber(stored).value_or(known->standardPort);
        break;
    case SettingType::kFlag:
        value = key.ReadNumber(stored).value_or(0) != 0;
        break;
    }
    return MailError::kSuccess;
}

// A login of its own is used when there is one.
DWORD AccountStore::AuthenticationMethod(const RegistryKey& account, bool enabled) const {
    if (!enabled) {
        return kNoLogin;
    }
    return account.ReadText(kSmtpLogin).value_or(L"").empty() ? kLoginOfIncomingServer : kOwnLogin;
}

MailError AccountStore::Write(std::wstring_view name, std::wstring_view setting,
                              const SettingValue& value) const {
    const AccountSetting* known = FindAccountSetting(setting);
    const std::optional<Account> account = Find(name);
    if (!account) {
        return MailError::kUnknownAccount;
    }
    if (!known || !known->BelongsTo(*account->protocol)) {
        return MailError::kUnknownSetting;
    }
    if (!IsValid(*known, value)) {
        return MailError::kInvalidValue;
    }
    const RegistryKey key = Open(L"\\Accounts\\" + account->key, KEY_QUERY_VALUE | KEY_SET_VALUE);
    const std::wstring stored = known->ValueFor(*account->protocol);
    bool written = false;
    if (const auto* text = std::get_if<std::wstring>(&value)) {
        written = key.WriteText(stored, *text);
    } else if (const auto* port = std::get_if<unsigned long>(&value)) {
        written = key.WriteNumber(stored, *port);
    } else {
        const bool flag = std::get<bool>(value);
        const bool isAuthentication = known->name == L"SmtpAuthentication";
        written =
            key.WriteNumber(stored, isAuthentication ? AuthenticationMethod(key, flag) : flag);
    }
    return written ? MailError::kSuccess : MailError::kWriteFailed;
}

std::wstring AccountStore::DefaultName(AccountKind kind) const {
    const std::wstring key =
        Open(L"", KEY_QUERY_VALUE).ReadText(DefaultValueOf(kind)).value_or(L"");
    const Account account = key.empty() ? Account() : Load(key);
    return account.Is(kind) ? account.name : std::wstring();
}

MailError AccountStore::SetDefault(AccountKind kind, std::wstring_view name) const {
    const std::optional<Account> account = Find(name);
    if (!account || !account->Is(kind)) {
        return MailError::kUnknownAccount;
    }
    const bool written = Open(L"", KEY_SET_VALUE).WriteText(DefaultValueOf(kind), account->key);
    return written ? MailError::kSuccess : MailError::kWriteFailed;
}

} // namespace tervane
