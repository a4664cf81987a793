// RASMgr and PhoneBookEntry through the built DLL, on the dial-up networking of the system, of an
// old one, and without any. Wine has the functions, but neither devices nor a phone book.

#include "support/OtherWindows.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

constexpr long kModuleNotFound = 126;
constexpr long kNoSuchDevice = 608;

class DialUpTest : public testing::Test {
protected:
    long Code() { return Read(manager_.Get(), L"LastErrorCode").Number(); }
    long CodeOf(const wchar_t* method, std::initializer_list<Argument> arguments) {
        return Call(manager_.Get(), method, arguments).status == S_OK ? Code() : -1;
    }

    Apartment apartment_;
    ComPtr<IDispatch> manager_ = TestComponent::Get().Create(__uuidof(::RASMgr));
    ComPtr<IDispatch> entry_ = TestComponent::Get().Create(__uuidof(::PhoneBookEntry));
};

TEST_F(DialUpTest, AsksTheSystem) {
    EXPECT_EQ(S_OK, Read(manager_.Get(), L"Entries").status);
    EXPECT_EQ(0, Code());
    EXPECT_EQ(0, CodeOf(L"FindDevices", {L".*"}));
    EXPECT_TRUE(Read(manager_.Get(), L"ActiveConnections").Texts().empty());
    EXPECT_EQ(8193, Call(manager_.Get(), L"GetConnectionState", {L"Tervane test"}).Number());
    EXPECT_EQ(0, Code());
    EXPECT_EQ(kNoSuchDevice, CodeOf(L"CreateEntry", {L"Tervane test", L"1", L"no such device"}));
    EXPECT_EQ(0, Call(manager_.Get(), L"DoesEntryExist", {L"Tervane test"}).Number());
}

TEST_F(DialUpTest, HoldsAnEntryThatIsNotSaved) {
    EXPECT_EQ(S_OK, Write(entry_.Get(), L"Name", L"Tervane test").status);
    EXPECT_EQ(S_OK, Write(entry_.Get(), L"PrimaryDnsServer", L"10.0.0.1").status);
    EXPECT_EQ(L"10.0.0.1", Read(entry_.Get(), L"PrimaryDnsServer").Text());
    EXPECT_EQ(S_OK, Write(entry_.Get(), L"PrimaryDnsServer", L"10.0.0").status);
    EXPECT_EQ(87, Read(entry_.Get(), L"LastErrorCode").Number());
    EXPECT_EQ(L"10.0.0.1", Read(entry_.Get(), L"PrimaryDnsServer").Text());
    EXPECT_EQ(-1, Read(entry_.Get(), L"UseRemoteDefaultGateway").Number());
    EXPECT_EQ(S_OK, Write(entry_.Get(), L"Password", L"secret").status);
    EXPECT_NE(S_OK, Read(entry_.Get(), L"Password").status);
    EXPECT_EQ(0, Read(entry_.Get(), L"HasPassword").Number());
}

// Dialling ends with one completion whatever the system's functions do.
TEST_F(DialUpTest, CompletesOnceForEveryId) {
    RecordingSink sink;
    ASSERT_NE(0u, Advise(manager_.Get(), &sink));
    const long id = Call(manager_.Get(), L"Connect", {L"Tervane test"}).Number();
    if (id == 0) {
        EXPECT_NE(0, Code());
    } else {
        Call(manager_.Get(), L"AbortConnect", {id});
        ASSERT_TRUE(sink.WaitFor(1, 20'000));
        EXPECT_EQ(id, sink[0].arguments.at(0).Get().lVal);
        EXPECT_EQ(0, sink[0].arguments.at(1).Get().iVal);
    }
    manager_.Reset();
    EXPECT_TRUE(PumpUntil([&] { return sink.References() == 0; }, 10'000));
    EXPECT_EQ(id == 0 ? 0u : 1u, sink.Count());
}

TEST_F(DialUpTest, DISABLED_ReportListing) {
    Read(manager_.Get(), L"Entries");
    ReportValue(static_cast<int>(std::min(Code(), 99L)));
}

TEST_F(DialUpTest, DISABLED_ReportAllMissing) {
    Read(manager_.Get(), L"Entries");
    bool all = Code() == kModuleNotFound;
    for (const wchar_t* method :
         {L"DoesEntryExist", L"FindEntries", L"DeleteEntry", L"GetEntry", L"Connect", L"HangUp",
          L"GetConnectionState", L"FindDevices", L"GetDeviceType"}) {
        all = CodeOf(method, {L"x"}) == kModuleNotFound && all;
    }
    all = CodeOf(L"CreateEntry", {L"x", L"1"}) == kModuleNotFound && all;
    all = CodeOf(L"RenameEntry", {L"x", L"y"}) == kModuleNotFound && all;
    Read(manager_.Get(), L"DefaultConnection");
    all = Code() == kModuleNotFound && all;
    Write(manager_.Get(), L"DefaultConnection", L"x");
    all = Code() == kModuleNotFound && all;
    Call(entry_.Get(), L"Load", {L"x"});
    all = Read(entry_.Get(), L"LastErrorCode").Number() == kModuleNotFound && all;
    Write(entry_.Get(), L"Name", L"x");
    Call(entry_.Get(), L"Save");
    all = Read(entry_.Get(), L"LastErrorCode").Number() == kModuleNotFound && all;
    ReportValue(all && !Read(entry_.Get(), L"LastError").Text().empty() ? 1 : 0);
}

TEST_F(DialUpTest, UsesTheFunctionsOfOldSystems) {
    if (!IsWine()) {
        GTEST_SKIP() << "only Wine can be told to be another Windows";
    }
    EXPECT_EQ(0, ValueOn("win98", "DialUpTest.DISABLED_ReportListing"));
    EXPECT_EQ(0, ValueOn("nt40", "DialUpTest.DISABLED_ReportListing"));
}

TEST_F(DialUpTest, FailsClearlyWhereTheSystemHasNoDialUpNetworking) {
    if (!IsWine()) {
        GTEST_SKIP() << "only Wine can be told to lack a library";
    }
    EXPECT_EQ(1, ValueOn("winxp", "DialUpTest.DISABLED_ReportAllMissing", "rasapi32"));
}

} // namespace
} // namespace tervane::test
