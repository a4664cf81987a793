#include "objects/mailclient/ConfigureOutlookExpress.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "objects/mailclient/OutlookExpressProgram.h"

namespace tervane {
namespace {

std::optional<Variant> ToVariant(const SettingValue& value) {
    if (const auto* text = std::get_if<std::wstring>(&value)) {
        return Variant::FromText(*text);
    }
    if (const auto* port = std::get_if<unsigned long>(&value)) {
        return Variant::FromLong(static_cast<LONG>(*port));
    }
    return Variant::FromBool(std::get<bool>(value));
}

// nullopt for a value that cannot be converted to the setting's type.
std::optional<SettingValue> FromVariant(SettingType type, const VARIANT& value) {
    const std::optional<Variant> plain = Variant::CopyOf(value);
    constexpr VARTYPE kTypes[] = {VT_BSTR, VT_I4, VT_BOOL};
    const std::optional<Variant> converted =
        plain ? plain->As(kTypes[static_cast<std::size_t>(type)]) : std::nullopt;
    if (!converted) {
        return std::nullopt;
    }
    switch (type) {
    case SettingType::kText:
        return std::wstring(converted->Text());
    case SettingType::kPort:
        return static_cast<unsigned long>(converted->Get().lVal);
    case SettingType::kFlag:
        return converted->Get().boolVal != VARIANT_FALSE;
    }
    return std::nullopt;
}

} // namespace

template <typename Use>
bool ConfigureOutlookExpress::UseAccounts(BSTR identity, Use use) {
    const std::optional<AccountStore> accounts = identities_.Accounts(TextOf(identity), lastError_);
    if (accounts) {
        lastError_ = use(*accounts);
    }
    return lastError_ == MailError::kSuccess;
}

HRESULT ConfigureOutlookExpress::get_Version(BSTR* result) {
    return AnswerText(result, [&] {
        lastError_ = MailError::kSuccess;
        return OutlookExpressVersion();
    });
}

HRESULT ConfigureOutlookExpress::get_ProgramPath(BSTR* result) {
    return AnswerText(result, [&] {
        lastError_ = MailError::kSuccess;
        return OutlookExpressPath();
    });
}

HRESULT ConfigureOutlookExpress::get_Identities(VARIANT* result) {
    return AnswerTexts(result, [&] {
        lastError_ = identities_.AreSetUp() ? MailError::kSuccess : MailError::kNoAccountStore;
        return identities_.Names();
    });
}

HRESULT ConfigureOutlookExpress::get_CurrentIdentity(BSTR* result) {
    return AnswerText(result, [&] {
        lastError_ = identities_.AreSetUp() ? MailError::kSuccess : MailError::kNoAccountStore;
        return identities_.CurrentName();
    });
}

HRESULT ConfigureOutlookExpress::ListAccounts(AccountKind kind, BSTR identity,
                                              VARIANT* result) noexcept {
    return AnswerTexts(result, [&] {
        std::vector<std::wstring> names;
        UseAccounts(identity, [&](const AccountStore& accounts) {
            names = accounts.Names(kind);
            return MailError::kSuccess;
        });
        return names;
    });
}

HRESULT ConfigureOutlookExpress::GetMailAccounts(BSTR identity, VARIANT* result) {
    return ListAccounts(AccountKind::kMail, identity, result);
}

HRESULT ConfigureOutlookExpress::GetNewsAccounts(BSTR identity, VARIANT* result) {
    return ListAccounts(AccountKind::kNews, identity, result);
}

HRESULT ConfigureOutlookExpress::AddMailAccount(BSTR account, BSTR incomingServer, BSTR smtpServer,
                                                BSTR emailAddress, VARIANT_BOOL useImap,
                                                BSTR identity, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return UseAccounts(identity, [&](const AccountStore& accounts) {
            return accounts.Add({useImap ? AccountProtocol::kImap : AccountProtocol::kPop3,
                                 TextOf(account), TextOf(incomingServer), TextOf(smtpServer),
                                 TextOf(emailAddress)});
        });
    });
}

HRESULT ConfigureOutlookExpress::AddNewsAccount(BSTR account, BSTR newsServer, BSTR emailAddress,
                                                BSTR identity, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return UseAccounts(identity, [&](const AccountStore& accounts) {
            return accounts.Add({AccountProtocol::kNews, TextOf(account), TextOf(newsServer), L"",
                                 TextOf(emailAddress)});
        });
    });
}

HRESULT ConfigureOutlookExpress::RemoveAccount(BSTR account, BSTR identity, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return UseAccounts(identity, [&](const AccountStore& accounts) {
            return accounts.Remove(TextOf(account));
        });
    });
}

HRESULT ConfigureOutlookExpress::get_AccountSettingNames(VARIANT* result) {
    return AnswerTexts(result, [&] {
        lastError_ = MailError::kSuccess;
        std::vector<std::wstring> names;
        for (const AccountSetting& setting : AccountSettings()) {
            names.emplace_back(setting.name);
        }
        return names;
    });
}

HRESULT ConfigureOutlookExpress::GetAccountSetting(BSTR account, BSTR setting, BSTR identity,
                                                   VARIANT* result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    VariantInit(result);
    return Guarded([&] {
        SettingValue value;
        const bool found = UseAccounts(identity, [&](const AccountStore& accounts) {
            return accounts.Read(TextOf(account), TextOf(setting), value);
        });
        return ReturnValue(found ? ToVariant(value) : Variant(), result);
    });
}

HRESULT ConfigureOutlookExpress::SetAccountSetting(BSTR account, BSTR setting, VARIANT value,
                                                   BSTR identity, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return UseAccounts(identity, [&](const AccountStore& accounts) {
            const AccountSetting* known = FindAccountSetting(TextOf(setting));
            const std::optional<SettingValue> converted =
                known ? FromVariant(known->type, value) : SettingValue();
            return converted ? accounts.Write(TextOf(account), TextOf(setting), *converted)
                             : MailError::kInvalidValue;
        });
    });
}

HRESULT ConfigureOutlookExpress::GetDefault(AccountKind kind, BSTR identity,
                                            BSTR* result) noexcept {
    return AnswerText(result, [&] {
        std::wstring name;
        UseAccounts(identity, [&](const AccountStore& accounts) {
            name = accounts.DefaultName(kind);
            return MailError::kSuccess;
        });
        return name;
    });
}

HRESULT ConfigureOutlookExpress::SetDefault(AccountKind kind, BSTR account, BSTR identity,
                                            VARIANT_BOOL* result) noexcept {
    return AnswerFlag(result, [&] {
        return UseAccounts(identity, [&](const AccountStore& accounts) {
            return accounts.SetDefault(kind, TextOf(account));
        });
    });
}

HRESULT ConfigureOutlookExpress::GetDefaultMailAccount(BSTR identity, BSTR* result) {
    return GetDefault(AccountKind::kMail, identity, result);
}

HRESULT ConfigureOutlookExpress::SetDefaultMailAccount(BSTR account, BSTR identity,
                                                       VARIANT_BOOL* result) {
    return SetDefault(AccountKind::kMail, account, identity, result);
}

HRESULT ConfigureOutlookExpress::GetDefaultNewsAccount(BSTR identity, BSTR* result) {
    return GetDefault(AccountKind::kNews, identity, result);
}

HRESULT ConfigureOutlookExpress::SetDefaultNewsAccount(BSTR account, BSTR identity,
                                                       VARIANT_BOOL* result) {
    return SetDefault(AccountKind::kNews, account, identity, result);
}

HRESULT ConfigureOutlookExpress::get_LastError(BSTR* result) {
    return AnswerText(result, [&] { return NameOf(lastError_); });
}

HRESULT ConfigureOutlookExpress::get_LastErrorCode(long* result) {
    return AnswerNumber(result, [&] { return static_cast<long>(lastError_); });
}

namespace create {

HRESULT ConfigureOutlookExpress(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::ConfigureOutlookExpress>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
