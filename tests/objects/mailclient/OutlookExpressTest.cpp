// Identities and accounts in registry trees of the shape that real installations have.

#include "objects/mailclient/AccountStore.h"
#include "objects/mailclient/MailIdentities.h"
#include "objects/mailclient/OutlookExpressProgram.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tervane {
namespace {

using enum MailError;
using test::ScratchHive;
using Names = std::vector<std::wstring>;

const std::wstring kManager = L"Software\\Microsoft\\Internet Account Manager";
const std::wstring kMainId = L"{0D8E1A20-3C5B-4E5C-9A10-5B8C2D1E7F01}";
const std::wstring kSecondId = L"{9F5E7B31-6D2A-4B8F-8E21-1A2B3C4D5E02}";

class AccountStoreTest : public testing::Test {
protected:
    AccountStoreTest() {
        user_.Fill(kManager, LR"(
            : Default Mail Account=00000001; Default LDAP Account=Active Directory GC; Account Name=#4
            \Accounts\00000001: Account Name=Work; POP3 Server=pop.example.org; POP3 User Name=jane
            \Accounts\00000001: SMTP Server=smtp.example.org; SMTP Port=#587; SMTP Use Sicily=#2
            \Accounts\00000001: SMTP Display Name=Jane
            \Accounts\00000003: Account Name=News; NNTP Server=news.example.org
            \Accounts\00000003: NNTP Display Name=J.
            \Accounts\VeriSign: Account Name=VeriSign Internet Directory Service
            \Accounts\VeriSign: LDAP Server=directory.verisign.com
            \Accounts\00000009)"); // a leftover without any value
        Account(L"00000001").WriteBytes(L"POP3 Password2", std::vector<unsigned char>{1, 0, 0, 0});
    }

    RegistryKey Account(const std::wstring& key) {
        return user_.Create(kManager + L"\\Accounts\\" + key);
    }
    static AccountStore::NewAccount Mail(const wchar_t* name) {
        return {AccountProtocol::kPop3, name, L"pop", L"smtp", L"a@example.org"};
    }
    static std::optional<SettingValue> Get(const AccountStore& store, const wchar_t* account,
                                           const wchar_t* setting) {
        SettingValue value;
        return store.Read(account, setting, value) == kSuccess ? std::optional(value)
                                                               : std::nullopt;
    }
    static SettingValue Text(const wchar_t* text) { return std::wstring(text); }
    static SettingValue Port(unsigned long port) { return port; }

    ScratchHive user_{RegistryHive::kCurrentUser};
    const AccountStore store_{kManager};
};

TEST_F(AccountStoreTest, ListsMailAndNewsAccountsAndReadsTheirSettings) {
    EXPECT_EQ(Names{L"Work"}, store_.Names(AccountKind::kMail));
    EXPECT_EQ(Names{L"News"}, store_.Names(AccountKind::kNews));
    EXPECT_EQ(L"Work", store_.DefaultName(AccountKind::kMail));
    EXPECT_EQ(L"", store_.DefaultName(AccountKind::kNews));

    EXPECT_EQ(Text(L"pop.example.org"), Get(store_, L"WORK", L"pop3server"));
    EXPECT_EQ(Text(L"jane"), Get(store_, L"Work", L"Pop3Login"));
    EXPECT_EQ(Text(L"Jane"), Get(store_, L"Work", L"DisplayName"));
    EXPECT_EQ(Text(L"J."), Get(store_, L"News", L"DisplayName"));
    EXPECT_EQ(Text(L""), Get(store_, L"Work", L"ReplyTo"));
    EXPECT_EQ(Port(587), Get(store_, L"Work", L"SmtpPort"));
    EXPECT_EQ(Port(110), Get(store_, L"Work", L"Pop3Port"));
    EXPECT_EQ(Port(119), Get(store_, L"News", L"NewsPort"));
    EXPECT_EQ(SettingValue(true), Get(store_, L"Work", L"SmtpAuthentication"));
    EXPECT_EQ(SettingValue(false), Get(store_, L"Work", L"Pop3Secure"));
    // Of another type than it should be: as if missing.
    Account(L"00000001").WriteText(L"SMTP Port", L"many");
    EXPECT_EQ(Port(25), Get(store_, L"Work", L"SmtpPort"));

    SettingValue value;
    EXPECT_EQ(kUnknownSetting, store_.Read(L"Work", L"NewsServer", value));
    EXPECT_EQ(kUnknownSetting, store_.Read(L"Work", L"ImapServer", value));
    EXPECT_EQ(kUnknownSetting, store_.Read(L"Work", L"Pop3Password2", value));
    EXPECT_EQ(kUnknownAccount, store_.Read(L"Nobody", L"Pop3Server", value));
    EXPECT_EQ(kUnknownAccount,
              store_.Read(L"VeriSign Internet Directory Service", L"DisplayName", value));
    // No setting at all reaches a password.
    for (const AccountSetting& setting : AccountSettings()) {
        EXPECT_EQ(std::wstring::npos, setting.value.find(L"Password"));
    }
}

TEST_F(AccountStoreTest, ChangesSettingsAndRefusesWhatDoesNotFit) {
    EXPECT_EQ(kSuccess, store_.Write(L"work", L"Pop3Port", Port(995)));
    EXPECT_EQ(kSuccess, store_.Write(L"work", L"Pop3Secure", true));
    EXPECT_EQ(kSuccess, store_.Write(L"News", L"EmailAddress", Text(L"j@example.org")));
    EXPECT_EQ(995u, Account(L"00000001").ReadNumber(L"POP3 Port"));
    EXPECT_EQ(1u, Account(L"00000001").ReadNumber(L"POP3 Secure Connection"));
    EXPECT_EQ(L"j@example.org", Account(L"00000003").ReadText(L"NNTP Email Address"));
    EXPECT_EQ(std::nullopt, Account(L"00000003").TypeOf(L"SMTP Email Address"));

    // With a login of its own, the one of the incoming server is not used.
    EXPECT_EQ(kSuccess, store_.Write(L"Work", L"SmtpLogin", Text(L"sender")));
    EXPECT_EQ(kSuccess, store_.Write(L"Work", L"SmtpAuthentication", true));
    EXPECT_EQ(3u, Account(L"00000001").ReadNumber(L"SMTP Use Sicily"));
    EXPECT_EQ(kSuccess, store_.Write(L"Work", L"SmtpLogin", Text(L"")));
    EXPECT_EQ(kSuccess, store_.Write(L"Work", L"SmtpAuthentication", true));
    EXPECT_EQ(2u, Account(L"00000001").ReadNumber(L"SMTP Use Sicily"));
    EXPECT_EQ(kSuccess, store_.Write(L"Work", L"SmtpAuthentication", false));
    EXPECT_EQ(0u, Account(L"00000001").ReadNumber(L"SMTP Use Sicily"));

    EXPECT_EQ(kInvalidValue, store_.Write(L"Work", L"Pop3Port", Port(0)));
    EXPECT_EQ(kInvalidValue, store_.Write(L"Work", L"Pop3Port", Port(65536)));
    EXPECT_EQ(kInvalidValue, store_.Write(L"Work", L"Pop3Port", Text(L"110")));
    EXPECT_EQ(kInvalidValue, store_.Write(L"Work", L"Pop3Server", Text(L"")));
    EXPECT_EQ(kInvalidValue, store_.Write(L"Work", L"DisplayName", Text(L"a\r\nb")));
    EXPECT_EQ(kUnknownSetting, store_.Write(L"News", L"Pop3Port", Port(1)));
    EXPECT_EQ(kUnknownAccount, store_.Write(L"", L"Pop3Port", Port(1)));
    EXPECT_EQ(Text(L"pop.example.org"), Get(store_, L"Work", L"Pop3Server"));
}

TEST_F(AccountStoreTest, AddsRemovesAndChoosesDefaults) {
    EXPECT_EQ(kSuccess, store_.Add({AccountProtocol::kImap, L"Home", L"imap.example.org",
                                    L"smtp.example.org", L"j@example.org"}));
    EXPECT_EQ(kSuccess, store_.Add({AccountProtocol::kNews, L"More", L"news", L"", L"j@x"}));
    EXPECT_EQ((Names{L"Work", L"Home"}), store_.Names(AccountKind::kMail));
    EXPECT_EQ(Text(L"imap.example.org"), Get(store_, L"Home", L"ImapServer"));
    EXPECT_EQ(Port(143), Get(store_, L"Home", L"ImapPort"));
    EXPECT_EQ(L"Home", Account(L"00000004").ReadText(L"Account Name"));
    EXPECT_EQ(6u, user_.Open(kManager).ReadNumber(L"Account Name"));
    EXPECT_EQ(L"Work", store_.DefaultName(AccountKind::kMail)); // neither is the first of its kind
    EXPECT_EQ(L"", store_.DefaultName(AccountKind::kNews));

    EXPECT_EQ(kSuccess, store_.SetDefault(AccountKind::kMail, L"HOME"));
    EXPECT_EQ(L"Home", store_.DefaultName(AccountKind::kMail));
    EXPECT_EQ(kUnknownAccount, store_.SetDefault(AccountKind::kMail, L"News"));
    Account(L"00000004\\Below").WriteText(L"x", L"y");
    EXPECT_EQ(kSuccess, store_.Remove(L"home"));
    EXPECT_EQ(kUnknownAccount, store_.Remove(L"home"));
    EXPECT_EQ(L"", store_.DefaultName(AccountKind::kMail));
    EXPECT_EQ(std::nullopt, user_.Open(kManager).TypeOf(L"Default Mail Account"));

    const std::wstring longName(256, L'n');
    const std::wstring_view badAccounts[][3] = {
        {L"", L"pop", L"a@b"},      {L" ", L"pop", L"a@b"}, {L"a\nb", L"pop", L"a@b"},
        {longName, L"pop", L"a@b"}, {L"n", L"", L"a@b"},    {L"n", L"pop", L""},
        {L"n", L"p\r", L"a@b"}};
    for (const auto& [name, server, address] : badAccounts) {
        EXPECT_EQ(kInvalidValue,
                  store_.Add({AccountProtocol::kPop3, name, server, L"smtp", address}));
    }
    EXPECT_EQ(kAccountExists, store_.Add(Mail(L"WORK")));
    EXPECT_EQ(kAccountExists, store_.Add(Mail(L"verisign internet directory service")));
    EXPECT_EQ(Names{L"Work"}, store_.Names(AccountKind::kMail));
}

TEST_F(AccountStoreTest, HoldsHundredsOfAccounts) {
    Names names = {L"Work"};
    for (int i = 100; i < 500; ++i) {
        names.push_back(L"Account " + std::to_wstring(i));
        const RegistryKey account = Account(L"00000" + std::to_wstring(i));
        account.WriteText(L"Account Name", names.back());
        account.WriteText(L"POP3 Server", L"pop");
    }
    EXPECT_TRUE(
        user_.Create(kManager).DeleteValue(L"Account Name")); // numbers start again, and are taken
    EXPECT_EQ(kSuccess, store_.Add(Mail(L"Last")));
    EXPECT_EQ(L"Last", Account(L"00000002").ReadText(L"Account Name"));
    names.insert(names.begin() + 1, L"Last");
    EXPECT_EQ(names, store_.Names(AccountKind::kMail));
    EXPECT_EQ(Text(L"pop"), Get(store_, L"account 499", L"Pop3Server"));
}

TEST_F(AccountStoreTest, StaysAsItWasWhenTheRegistryRefuses) {
    for (const wchar_t* value : {L"Account Name", L"Connection Type", L"POP3 Server",
                                 L"SMTP Email Address", L"Default Mail Account"}) {
        const std::wstring path = kManager + L" 2";
        const AccountStore refused(path, test::RefuseValue(value));
        EXPECT_EQ(kWriteFailed, refused.Add(Mail(L"New"))) << value;
        EXPECT_TRUE(user_.Open(path + L"\\Accounts").SubKeyNames().empty()) << value;
    }
    const AccountStore store(kManager, test::RefuseValue(L"POP3 Port"));
    EXPECT_EQ(kWriteFailed, store.Write(L"Work", L"Pop3Port", Port(995)));
    EXPECT_EQ(kWriteFailed, AccountStore(kManager, test::RefuseKey(L"none")).Remove(L"Work"));
    EXPECT_EQ(kWriteFailed, AccountStore(kManager, test::RefuseValue(L"Default Mail Account"))
                                .SetDefault(AccountKind::kMail, L"Work"));
    // No default may name an account that is gone.
    EXPECT_EQ(kWriteFailed,
              AccountStore(kManager, test::RefuseValue(L"Default Mail Account")).Remove(L"Work"));
    EXPECT_EQ(L"Work", store_.DefaultName(AccountKind::kMail));
    EXPECT_EQ(Port(110), Get(store_, L"Work", L"Pop3Port"));
}

class MailIdentitiesTest : public testing::Test {
protected:
    void AddIdentity(const std::wstring& id, const std::wstring& name, const wchar_t* ordinal) {
        user_.Fill(L"Identities\\", id + L": Username=" + name + L"; Identity Ordinal=#" + ordinal);
    }
    void AddAccount(const std::wstring& manager, const wchar_t* name) {
        AccountStore(manager).Add({AccountProtocol::kPop3, name, L"pop", L"smtp", L"a@b"});
    }
    Names MailAccounts(const wchar_t* identity) {
        const auto accounts = identities_.Accounts(identity, error_);
        return accounts ? accounts->Names(AccountKind::kMail) : Names();
    }

    ScratchHive user_{RegistryHive::kCurrentUser};
    const MailIdentities identities_;
    MailError error_ = kWriteFailed;
};

TEST_F(MailIdentitiesTest, AreNoneBeforeTheMailClientIsSetUp) {
    EXPECT_TRUE(identities_.Names().empty());
    EXPECT_EQ(L"", identities_.CurrentName());
    EXPECT_FALSE(identities_.AreSetUp());
    MailAccounts(L"");
    EXPECT_EQ(kNoAccountStore, error_);
    // Versions without identities have accounts all the same.
    AddAccount(kManager, L"Old");
    EXPECT_TRUE(identities_.AreSetUp());
    EXPECT_EQ(Names{L"Old"}, MailAccounts(L""));
    EXPECT_EQ(kSuccess, error_);
    MailAccounts(L"Main Identity");
    EXPECT_EQ(kUnknownIdentity, error_);
}

TEST_F(MailIdentitiesTest, HaveAccountsOfTheirOwn) {
    AddIdentity(kSecondId, L"Élodie", L"2");
    AddIdentity(kMainId, L"Main Identity", L"1");
    user_.Create(L"Identities\\{without a name}");
    AddAccount(kManager, L"Main's");
    EXPECT_EQ((Names{L"Main Identity", L"Élodie"}), identities_.Names());
    EXPECT_EQ(L"Main Identity", identities_.CurrentName());
    EXPECT_EQ(Names{L"Main's"}, MailAccounts(L"main identity"));
    EXPECT_EQ(Names{}, MailAccounts(L"élodie"));
    EXPECT_EQ(kSuccess, error_);

    identities_.Accounts(L"Élodie", error_)
        ->Add({AccountProtocol::kPop3, L"Hers", L"pop", L"smtp", L"a@b"});
    EXPECT_EQ(Names{L"Hers"}, MailAccounts(L"ÉLODIE"));
    EXPECT_TRUE(user_.Open(L"Identities\\" + kSecondId + L"\\" + kManager + L"\\Accounts\\00000001")
                    .IsOpen());
    user_.Create(L"Identities").WriteText(L"Default User ID", kSecondId);
    EXPECT_EQ(L"Élodie", identities_.CurrentName());
    user_.Create(L"Identities").WriteText(L"Last User ID", kMainId);
    EXPECT_EQ(Names{L"Main's"}, MailAccounts(L""));
    user_.Create(L"Identities").WriteText(L"Last User ID", L"{gone}");
    EXPECT_EQ(Names{L"Hers"}, MailAccounts(L""));
    MailAccounts(L"Nobody");
    EXPECT_EQ(kUnknownIdentity, error_);
    AddAccount(L"Identities\\" + kMainId + L"\\" + kManager, L"Own");
    EXPECT_EQ(Names{L"Own"}, MailAccounts(L"Main Identity"));
}

TEST(OutlookExpressProgramTest, IsReadFromItsSetup) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    EXPECT_EQ(L"", OutlookExpressVersion());
    EXPECT_EQ(L"", OutlookExpressPath());
    const std::wstring microsoft = L"SOFTWARE\\Microsoft\\";
    const RegistryKey program = machine.Create(microsoft + L"Outlook Express");
    program.WriteExpandableText(L"InstallRoot", L"%SystemDrive%\\Outlook Express");
    EXPECT_EQ(L"C:\\Outlook Express\\msimn.exe", OutlookExpressPath());
    machine.Fill(microsoft, LR"(Windows\CurrentVersion\App Paths\msimn.exe: ="D:\OE\msimn.exe")");
    EXPECT_EQ(L"D:\\OE\\msimn.exe", OutlookExpressPath());
    machine.Fill(microsoft + L"Active Setup\\Installed Components\\",
                 L"{44BBA840-CC51-11CF-AAFA-00AA00B6015C}: Version=5,50,4807,1700");
    EXPECT_EQ(L"5.50.4807.1700", OutlookExpressVersion());
    program.WriteText(L"MediaVer", L"6,0,2900,5512");
    EXPECT_EQ(L"6.0.2900.5512", OutlookExpressVersion());
}

} // namespace
} // namespace tervane
