// ConfigureOutlookExpress through the built DLL, on hives of the test's own.

#include "support/ObjectTest.h"
#include "support/ScratchRegistry.h"

#include <algorithm>

namespace tervane::test {
namespace {

class ConfigureOutlookExpressTest : public ObjectTest {
protected:
    ConfigureOutlookExpressTest() : ObjectTest(L"ConfigureOutlookExpress") {}
    ScratchHive user_{RegistryHive::kCurrentUser};
};

TEST_F(ConfigureOutlookExpressTest, TellsThatThereIsNothing) {
    Answers({{L"Identities", {}, L"[]"},
             {L"LastErrorCode", {}, L"1"},
             {L"LastError", {}, L"NO_ACCOUNT_STORE"},
             {L"AddMailAccount", {L"A", L"pop", L"smtp", L"a@b"}, L"false"},
             {L"LastErrorCode", {}, L"1"},
             {L"Version", {}, L""},
             {L"LastErrorCode", {}, L"0"}});
}

TEST_F(ConfigureOutlookExpressTest, ManagesAccountsByNameAndDefaults) {
    user_.Fill(L"Identities\\{0D8E1A20-3C5B-4E5C-9A10-5B8C2D1E7F01}",
               L": Username=Main Identity; Identity Ordinal=#1");
    Answers({{L"Identities", {}, L"[Main Identity]"},
             {L"CurrentIdentity", {}, L"Main Identity"},
             {L"AddMailAccount", {L"A", L"pop", L"smtp", L"a@b"}, L"true"},
             {L"AddMailAccount", {L"B", L"imap", L"smtp", L"a@b", true, L"main identity"}, L"true"},
             {L"GetAccountSetting", {L"A", L"Pop3Server"}, L"pop"},
             {L"GetAccountSetting", {L"B", L"ImapServer"}, L"imap"},
             {L"GetAccountSetting", {L"B", L"Pop3Server"}, L"empty"},
             {L"AddNewsAccount", {L"N", L"news", L"a@b"}, L"true"},
             {L"GetMailAccounts", {}, L"[A, B]"},
             {L"GetNewsAccounts", {L""}, L"[N]"},
             {L"GetDefaultMailAccount", {}, L"A"},
             {L"SetDefaultMailAccount", {L"B"}, L"true"},
             {L"GetDefaultMailAccount", {}, L"B"},
             {L"GetDefaultNewsAccount", {}, L"N"},
             {L"SetDefaultNewsAccount", {L"A"}, L"false"},
             {L"LastErrorCode", {}, L"3"},
             {L"RemoveAccount", {L"B"}, L"true"},
             {L"GetDefaultMailAccount", {}, L""},
             {L"AddNewsAccount", {L"a", L"news", L"a@b"}, L"false"},
             {L"LastErrorCode", {}, L"6"},
             {L"GetMailAccounts", {L"Nobody"}, L"[]"},
             {L"LastErrorCode", {}, L"2"}});
}

TEST_F(ConfigureOutlookExpressTest, ConvertsValuesToTheTypesOfTheirSettings) {
    user_.Create(L"Software\\Microsoft\\Internet Account Manager");
    Answers({{L"AddMailAccount", {L"A", L"pop", L"smtp", L"a@b"}, L"true"},
             {L"SetAccountSetting", {L"A", L"Pop3Port", L"995"}, L"true"},
             {L"SetAccountSetting", {L"A", L"Pop3Secure", 1}, L"true"},
             {L"SetAccountSetting", {L"A", L"DisplayName", 42}, L"true"},
             {L"GetAccountSetting", {L"A", L"Pop3Port"}, L"995"},
             {L"GetAccountSetting", {L"A", L"Pop3Secure"}, L"true"},
             {L"GetAccountSetting", {L"A", L"DisplayName"}, L"42"}});
    EXPECT_EQ(21, std::ranges::count(Ask(L"AccountSettingNames"), L','));
    for (const wchar_t* bad : {L"abc", L"0", L"65536", L"-1", L""}) {
        Answers({{L"SetAccountSetting", {L"A", L"Pop3Port", bad}, L"false"},
                 {L"LastErrorCode", {}, L"5"}});
    }
    Answers({{L"SetAccountSetting", {L"A", L"Nothing", 1}, L"false"},
             {L"LastErrorCode", {}, L"4"},
             {L"GetAccountSetting", {L"A", L"NewsServer"}, L"empty"},
             {L"LastErrorCode", {}, L"4"},
             {L"GetAccountSetting", {L"A", L"Pop3Port"}, L"995"},
             {L"LastErrorCode", {}, L"0"}});
}

} // namespace
} // namespace tervane::test
