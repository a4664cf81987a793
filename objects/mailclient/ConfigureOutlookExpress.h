#pragma once

// Identities and accounts of Outlook Express for scripts; see MailIdentities.h and AccountStore.h.
// Whatever a member cannot do it tells through LastError, never as a script error.

#include "component/Automation.h"
#include "objects/mailclient/AccountStore.h"
#include "objects/mailclient/MailIdentities.h"

#include <TERVANELib.h>

namespace tervane {

class ConfigureOutlookExpress final : public AutomationObject<IConfigureOutlookExpress> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE get_Version(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_ProgramPath(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_Identities(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE get_CurrentIdentity(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetMailAccounts(BSTR identity, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetNewsAccounts(BSTR identity, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE AddMailAccount(BSTR account, BSTR incomingServer, BSTR smtpServer,
                                             BSTR emailAddress, VARIANT_BOOL useImap, BSTR identity,
                                             VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE AddNewsAccount(BSTR account, BSTR newsServer, BSTR emailAddress,
                                             BSTR identity, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE RemoveAccount(BSTR account, BSTR identity,
                                            VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_AccountSettingNames(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetAccountSetting(BSTR account, BSTR setting, BSTR identity,
                                                VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE SetAccountSetting(BSTR account, BSTR setting, VARIANT value,
                                                BSTR identity, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetDefaultMailAccount(BSTR identity, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE SetDefaultMailAccount(BSTR account, BSTR identity,
                                                    VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetDefaultNewsAccount(BSTR identity, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE SetDefaultNewsAccount(BSTR account, BSTR identity,
                                                    VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE get_LastError(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long* result) override;

private:
    // Runs `use` on an identity's accounts and keeps the error that it returns; true for success.
    template <typename Use>
    bool UseAccounts(BSTR identity, Use use);

    HRESULT ListAccounts(AccountKind kind, BSTR identity, VARIANT* result) noexcept;
    HRESULT GetDefault(AccountKind kind, BSTR identity, BSTR* result) noexcept;
    HRESULT SetDefault(AccountKind kind, BSTR account, BSTR identity,
                       VARIANT_BOOL* result) noexcept;

    const MailIdentities identities_;
    MailError lastError_ = MailError::kSuccess;
};

} // namespace tervane
