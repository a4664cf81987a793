#pragma once

// The outcomes of the operations on identities and accounts, as scripts see them.

namespace tervane {

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

} // namespace tervane
