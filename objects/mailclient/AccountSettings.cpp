#include "objects/mailclient/AccountSettings.h"

#include "platform/text/LetterCase.h"

#include <algorithm>
#include <iterator>

namespace tervane {
namespace {

using enum SettingType;

constexpr unsigned kPop3 = static_cast<unsigned>(AccountProtocol::kPop3);
constexpr unsigned kImap = static_cast<unsigned>(AccountProtocol::kImap);
constexpr unsigned kHttp = static_cast<unsigned>(AccountProtocol::kHttp);
constexpr unsigned kNews = static_cast<unsigned>(AccountProtocol::kNews);
constexpr unsigned kSending = kPop3 | kImap;
constexpr unsigned kAny = kSending | kHttp | kNews;

constexpr AccountSetting kSettings[] = {
    {L"DisplayName", kText, kAny, L" Display Name"},
    {L"Organization", kText, kAny, L" Organization Name"},
    {L"EmailAddress", kText, kAny, L" Email Address"},
    {L"ReplyTo", kText, kAny, L" Reply To Email Address"},
    {L"Pop3Server", kText, kPop3, L"POP3 Server", 0, true},
    {L"Pop3Login", kText, kPop3, L"POP3 User Name"},
    {L"ImapServer", kText, kImap, L"IMAP Server", 0, true},
    {L"ImapLogin", kText, kImap, L"IMAP User Name"},
    {L"SmtpServer", kText, kSending, L"SMTP Server"},
    {L"SmtpLogin", kText, kSending, L"SMTP User Name"},
    {L"NewsServer", kText, kNews, L"NNTP Server", 0, true},
    {L"NewsLogin", kText, kNews, L"NNTP User Name"},
    {L"Pop3Port", kPort, kPop3, L"POP3 Port", 110},
    {L"ImapPort", kPort, kImap, L"IMAP Port", 143},
    {L"SmtpPort", kPort, kSending, L"SMTP Port", 25},
    {L"NewsPort", kPort, kNews, L"NNTP Port", 119},
    {L"Pop3Secure", kFlag, kPop3, L"POP3 Secure Connection"},
    {L"ImapSecure", kFlag, kImap, L"IMAP Secure Connection"},
    {L"SmtpSecure", kFlag, kSending, L"SMTP Secure Connection"},
    {L"NewsSecure", kFlag, kNews, L"NNTP Secure Connection"},
    {L"SmtpAuthentication", kFlag, kSending, L"SMTP Use Sicily"},
    {L"LeaveMailOnServer", kFlag, kPop3, L"Leave Mail On Server"},
};

constexpr std::size_t kLongestAccountName = 255;

} // namespace

std::wstring AccountSetting::ValueFor(AccountProtocol protocol) const {
    if (value.front() != L' ') {
        return std::wstring(value);
    }
    return (protocol == AccountProtocol::kNews ? L"NNTP" : L"SMTP") + std::wstring(value);
}

std::span<const AccountSetting> AccountSettings() noexcept {
    return kSettings;
}

const AccountSetting* FindAccountSetting(std::wstring_view name) noexcept {
    const auto* found =
        std::find_if(std::begin(kSettings), std::end(kSettings), [name](const auto& setting) {
            return EqualsIgnoringAsciiCase(setting.name, name);
        });
    return found == std::end(kSettings) ? nullptr : found;
}

std::wstring_view ServerValueOf(AccountProtocol protocol) noexcept {
    switch (protocol) {
    case AccountProtocol::kPop3:
        return L"POP3 Server";
    case AccountProtocol::kImap:
        return L"IMAP Server";
    case AccountProtocol::kHttp:
        return L"HTTPMail Server";
    case AccountProtocol::kNews:
        return L"NNTP Server";
    }
    return {};
}

bool IsSettingText(std::wstring_view text) noexcept {
    return std::none_of(text.begin(), text.end(),
                        [](wchar_t letter) { return letter < L' ' || letter == 0x7F; });
}

bool IsAccountName(std::wstring_view name) noexcept {
    return name.find_first_not_of(L' ') != std::wstring_view::npos &&
           name.size() <= kLongestAccountName && IsSettingText(name);
}

} // namespace tervane
