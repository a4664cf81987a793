// RASMgr and PhoneBookEntry through the built DLL, on the dial-up networking of the system, of an
// old one, and without any. Wine has the functions, but neither devices nor a phone book.

#include "support/ObjectTest.h"
#include "support/OtherWindows.h"

namespace tervane::test {
namespace {

class DialUpTest : public ObjectTest {
protected:
    DialUpTest() : ObjectTest(L"RASMgr") {}
    ComPtr<IDispatch> entry_ = New(L"PhoneBookEntry");
};

TEST_F(DialUpTest, AsksTheSystem) {
    EXPECT_EQ(L'[', Ask(L"Entries")[0]);
    Answers({{L"LastErrorCode", {}, L"0"},
             {L"FindDevices", {L".*"}, L"[]"},
             {L"ActiveConnections", {}, L"[]"},
             {L"GetConnectionState", {L"Tervane test"}, L"8193"},
             {L"LastErrorCode", {}, L"0"},
             {L"CreateEntry", {L"Tervane test", L"1", L"no such device"}, L"false"},
             {L"LastErrorCode", {}, L"608"}, // no such device
             {L"DoesEntryExist", {L"Tervane test"}, L"false"}});
}

TEST_F(DialUpTest, HoldsAnEntryThatIsNotSaved) {
    ExpectAnswers(entry_.Get(), {{L"Name=", {L"Tervane test"}},
                                 {L"PrimaryDnsServer=", {L"10.0.0.1"}},
                                 {L"PrimaryDnsServer", {}, L"10.0.0.1"},
                                 {L"PrimaryDnsServer=", {L"10.0.0"}},
                                 {L"LastErrorCode", {}, L"87"},
                                 {L"PrimaryDnsServer", {}, L"10.0.0.1"},
                                 {L"UseRemoteDefaultGateway", {}, L"true"},
                                 {L"Password=", {L"secret"}},
                                 {L"Password", {}, L"error 80020003"}, // is only written
                                 {L"HasPassword", {}, L"false"}});
}

TEST_F(DialUpTest, DISABLED_ReportListing) {
    Ask(L"Entries");
    ReportValue(Ask(L"LastErrorCode") == L"0" ? 1 : 0);
}

TEST_F(DialUpTest, DISABLED_ReportAllMissing) {
    const std::pair<std::wstring, std::vector<Argument>> members[] = {
        {L"Entries", {}},           {L"DoesEntryExist", {L"x"}},     {L"FindEntries", {L"x"}},
        {L"DeleteEntry", {L"x"}},   {L"GetEntry", {L"x"}},           {L"Connect", {L"x"}},
        {L"HangUp", {L"x"}},        {L"GetConnectionState", {L"x"}}, {L"FindDevices", {L"x"}},
        {L"GetDeviceType", {L"x"}}, {L"CreateEntry", {L"x", L"1"}},  {L"RenameEntry", {L"x", L"y"}},
        {L"DefaultConnection", {}}, {L"DefaultConnection=", {L"x"}},
    };
    for (const auto& [member, arguments] : members) {
        EXPECT_FALSE(Ask(member, arguments).starts_with(L"error")) << member;
        Answers({{L"LastErrorCode", {}, L"126"}}); // module not found
    }
    Ask(L"LastErrorCode");
    test::Ask(entry_.Get(), L"Name=", {L"x"});
    for (const wchar_t* method : {L"Load", L"Save"}) {
        Call(entry_.Get(), method, std::vector<Argument>(method[0] == L'L', Argument(L"x")));
        EXPECT_EQ(L"126", test::Ask(entry_.Get(), L"LastErrorCode")) << method;
    }
    EXPECT_NE(L"", test::Ask(entry_.Get(), L"LastError"));
    ReportValue(HasFailure() ? 0 : 1);
}

TEST_F(DialUpTest, UsesWhatTheSystemHas) {
    TERVANE_ONLY_ON_WINE();
    EXPECT_EQ(1, ValueOn("win98", "DialUpTest.DISABLED_ReportListing"));
    EXPECT_EQ(1, ValueOn("nt40", "DialUpTest.DISABLED_ReportListing"));
    EXPECT_EQ(1, ValueOn("winxp", "DialUpTest.DISABLED_ReportAllMissing", "rasapi32"));
}

} // namespace
} // namespace tervane::test
