// ConfigureOutlookExpress through the built DLL, on hives of the test's own.

#include "support/ScratchRegistry.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

class ConfigureOutlookExpressTest : public testing::Test {
protected:
    template <typename... Arguments>
    CallResult CallOn(const wchar_t* method, Arguments... arguments) {
        return Call(object_.Get(), method, {Argument(arguments)...});
    }
    long Code() { return Read(object_.Get(), L"LastErrorCode").Number(); }

    Apartment apartment_;
    ScratchHive user_{RegistryHive::kCurrentUser};
    ComPtr<IDispatch> object_ = TestComponent::Get().Create(__uuidof(::ConfigureOutlookExpress));
};

TEST_F(ConfigureOutlookExpressTest, TellsThatThereIsNothing) {
    EXPECT_TRUE(Read(object_.Get(), L"Identities").Texts().empty());
    EXPECT_EQ(1, Code());
    EXPECT_EQ(L"NO_ACCOUNT_STORE", Read(object_.Get(), L"LastError").Text());
    EXPECT_EQ(0, CallOn(L"AddMailAccount", L"A", L"pop", L"smtp", L"a@b").Number());
    EXPECT_EQ(1, Code());
    EXPECT_EQ(L"", Read(object_.Get(), L"Version").Text());
    EXPECT_EQ(0, Code());
}

TEST_F(ConfigureOutlookExpressTest, ManagesAccountsByNameAndDefaults) {
    const RegistryKey main = user_.Create(L"Identities\\{0D8E1A20-3C5B-4E5C-9A10-5B8C2D1E7F01}");
    main.WriteText(L"Username", L"Main Identity");
    main.WriteNumber(L"Identity Ordinal", 1);
    EXPECT_EQ(std::vector<std::wstring>{L"Main Identity"},
              Read(object_.Get(), L"Identities").Texts());
    EXPECT_EQ(L"Main Identity", Read(object_.Get(), L"CurrentIdentity").Text());

    EXPECT_EQ(-1, CallOn(L"AddMailAccount", L"A", L"pop", L"smtp", L"a@b").Number());
    EXPECT_EQ(
        -1,
        CallOn(L"AddMailAccount", L"B", L"imap", L"smtp", L"a@b", true, L"main identity").Number());
    EXPECT_EQ(-1, CallOn(L"AddNewsAccount", L"N", L"news", L"a@b").Number());
    EXPECT_EQ((std::vector<std::wstring>{L"A", L"B"}), CallOn(L"GetMailAccounts").Texts());
    EXPECT_EQ(std::vector<std::wstring>{L"N"}, CallOn(L"GetNewsAccounts", L"").Texts());
    EXPECT_EQ(L"A", CallOn(L"GetDefaultMailAccount").Text());
    EXPECT_EQ(-1, CallOn(L"SetDefaultMailAccount", L"B").Number());
    EXPECT_EQ(L"B", CallOn(L"GetDefaultMailAccount").Text());
    EXPECT_EQ(L"N", CallOn(L"GetDefaultNewsAccount").Text());
    EXPECT_EQ(0, CallOn(L"SetDefaultNewsAccount", L"A").Number());
    EXPECT_EQ(3, Code());
    EXPECT_EQ(-1, CallOn(L"RemoveAccount", L"B").Number());
    EXPECT_EQ(L"", CallOn(L"GetDefaultMailAccount").Text());
    EXPECT_EQ(0, CallOn(L"AddNewsAccount", L"a", L"news", L"a@b").Number());
    EXPECT_EQ(6, Code());
    EXPECT_TRUE(CallOn(L"GetMailAccounts", L"Nobody").Texts().empty());
    EXPECT_EQ(2, Code());
}

TEST_F(ConfigureOutlookExpressTest, ConvertsValuesToTheTypesOfTheirSettings) {
    user_.Create(L"Software\\Microsoft\\Internet Account Manager");
    ASSERT_EQ(-1, CallOn(L"AddMailAccount", L"A", L"pop", L"smtp", L"a@b").Number());
    EXPECT_EQ(22u, Read(object_.Get(), L"AccountSettingNames").Texts().size());
    EXPECT_EQ(-1, CallOn(L"SetAccountSetting", L"A", L"Pop3Port", L"995").Number());
    EXPECT_EQ(-1, CallOn(L"SetAccountSetting", L"A", L"Pop3Secure", 1).Number());
    EXPECT_EQ(-1, CallOn(L"SetAccountSetting", L"A", L"DisplayName", 42).Number());
    const CallResult port = CallOn(L"GetAccountSetting", L"A", L"Pop3Port");
    EXPECT_EQ(VT_I4, port.value.Type());
    EXPECT_EQ(995, port.Number());
    const CallResult secure = CallOn(L"GetAccountSetting", L"A", L"Pop3Secure");
    EXPECT_EQ(VT_BOOL, secure.value.Type());
    EXPECT_EQ(-1, secure.Number());
    EXPECT_EQ(L"42", CallOn(L"GetAccountSetting", L"A", L"DisplayName").Text());

    for (const wchar_t* bad : {L"abc", L"0", L"65536", L"-1", L""}) {
        EXPECT_EQ(0, CallOn(L"SetAccountSetting", L"A", L"Pop3Port", bad).Number()) << bad;
        EXPECT_EQ(5, Code());
    }
    EXPECT_EQ(0, CallOn(L"SetAccountSetting", L"A", L"Nothing", 1).Number());
    EXPECT_EQ(4, Code());
    EXPECT_EQ(VT_EMPTY, CallOn(L"GetAccountSetting", L"A", L"NewsServer").value.Type());
    EXPECT_EQ(4, Code());
    EXPECT_EQ(995, CallOn(L"GetAccountSetting", L"A", L"Pop3Port").Number());
    EXPECT_EQ(0, Code());
}

} // namespace
} // namespace tervane::test
