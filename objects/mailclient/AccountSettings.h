#pragma once

// The settings of mail and news accounts by the names that scripts use, and the values in which
// Outlook Express stores them. Passwords are not among them.

#include <span>
#include <string>
#include <string_view>

namespace tervane {

// What an account is for; the numbers are bits, so that a setting can belong to several.
enum class AccountProtocol : unsigned { kPop3 = 1, kImap = 2, kHttp = 4, kNews = 8 };

enum class SettingType {
    kText,
    // 1 to 65535; the standard port when nothing is stored.
    kPort,
    // Stored as a number, 0 for false; false when nothing is stored.
    kFlag,
};

struct AccountSetting {
    std::wstring_view name;
    SettingType type;
    // The protocols whose accounts have it.
    unsigned protocols;
    // The name of the value in the registry. Settings that mail and news accounts both have begin
    // with "SMTP" or "NNTP" there, which is left out here.
    std::wstring_view value;
    unsigned long standardPort = 0;
    // Whether the account would be none without it.
    bool isRequired = false;

    bool BelongsTo(AccountProtocol protocol) const noexcept {
        return (protocols & static_cast<unsigned>(protocol)) != 0;
    }
    // The whole name of the value for an account of that protocol.
    std::wstring ValueFor(AccountProtocol protocol) const;
};

std::span<const AccountSetting> AccountSettings() noexcept;

// By its name in any case; null for an unknown one.
const AccountSetting* FindAccountSetting(std::wstring_view name) noexcept;

// The value that makes an account one of that protocol.
std::wstring_view ServerValueOf(AccountProtocol protocol) noexcept;

// Whether a text can be stored: it has no control characters.
bool IsSettingText(std::wstring_view text) noexcept;

// Whether an account can be called so: neither empty nor longer than the mail client can show.
bool IsAccountName(std::wstring_view name) noexcept;

} // namespace tervane
