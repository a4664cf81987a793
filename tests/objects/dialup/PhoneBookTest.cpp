// The phone book by the functions of the system, in both their forms and in the sizes of every
// release of Windows.

#include "objects/dialup/PhoneBook.h"
#include "objects/dialup/DefaultConnection.h"
#include "objects/dialup/Ipv4Text.h"
#include "objects/dialup/RasDialUp.h"
#include "support/ScratchRegistry.h"
#include "tests/objects/dialup/FakeRas.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using namespace std::string_literals;

using test::FakeEntry;
using test::FakeRas;

TEST(Ipv4TextTest, TakesFourNumbersAndNothingElse) {
    for (const wchar_t* text : {L"1.2.3.4", L"255.255.255.255", L"10.0.0.1"}) {
        ASSERT_TRUE(ParseIpv4(text)) << text;
        EXPECT_EQ(text, Ipv4Text(*ParseIpv4(text)));
    }
    EXPECT_EQ(Ipv4Bytes(), ParseIpv4(L""));
    EXPECT_EQ(L"", Ipv4Text(*ParseIpv4(L"0.0.0.0")));
    for (const wchar_t* text :
         {L"1.2.3", L"1.2.3.4.", L"1.2.3.4.5", L"256.1.1.1", L"01.1.1.1", L"1..1.1", L" 1.1.1.1",
          L"1.1.1.1 ", L"+1.1.1.1", L"a.b.c.d", L".1.1.1", L"0001.1.1.1", L"1.1.1.-1"}) {
        EXPECT_EQ(std::nullopt, ParseIpv4(text)) << text;
    }
}

template <typename Form>
class PhoneBookTest : public testing::Test {
protected:
    PhoneBookTest() { ras_.Reset(); }
    ~PhoneBookTest() override { ras_.Reset(); }

    FakeRas& ras_ = FakeRas::Get();
    const std::shared_ptr<const DialUp> dialUp_ =
        std::make_shared<RasDialUp<Form>>(FakeRas::Api<Form>());
    const PhoneBook phoneBook_{dialUp_};
};

using Forms = testing::Types<WideRas, NarrowRas>;
TYPED_TEST_SUITE(PhoneBookTest, Forms);

PhoneBookDraft FullDraft() {
    PhoneBookDraft draft;
    draft.name = L"Provider";
    draft.record = {.phoneNumber = L"5550100",
                    .areaCode = L"0228",
                    .countryCode = 49,
                    .usesAreaAndCountryCodes = true,
                    .deviceName = L"Modem 56K",
                    .deviceType = L"modem",
                    .address = {10, 1, 2, 3},
                    .dns = {},
                    .alternateDns = {},
                    .wins = {},
                    .alternateWins = {10, 0, 0, 9},
                    .usesRemoteGateway = false,
                    .compressesHeaders = true};
    draft.credentials = {L"jane", L"DOMAIN", false};
    draft.newPassword = ZelBase::WideSecretText(L"secret");
    return draft;
}

auto Facts(const PhoneBookRecord& record) {
    return std::tuple(record.phoneNumber, record.areaCode, record.countryCode,
                      record.usesAreaAndCountryCodes, record.deviceName, record.deviceType,
                      record.address, record.dns, record.alternateDns, record.wins,
                      record.alternateWins, record.usesRemoteGateway, record.compressesHeaders);
}

TYPED_TEST(PhoneBookTest, SavesAndLoadsEverySettingOnEveryRelease) {
    for (int release = 0; release < 4; ++release) {
        this->ras_.Reset();
        this->ras_.release = release;
        PhoneBookDraft draft = FullDraft();
        ASSERT_EQ(0u, this->phoneBook_.Save(draft)) << release;
        EXPECT_TRUE(draft.credentials.hasPassword);
        PhoneBookDraft loaded;
        ASSERT_EQ(0u, this->phoneBook_.Load(L"PROVIDER", loaded)) << release;
        EXPECT_EQ(Facts(draft.record), Facts(loaded.record));
        EXPECT_EQ(L"jane", loaded.credentials.userName);
        EXPECT_EQ(L"DOMAIN", loaded.credentials.domain);
        EXPECT_TRUE(loaded.credentials.hasPassword);
        EXPECT_EQ(L"secret", this->ras_.Find(L"provider")->password);
        std::vector<std::wstring> names;
        EXPECT_EQ(0u, this->phoneBook_.List(names));
        EXPECT_EQ(std::vector<std::wstring>{L"Provider"}, names);
        EXPECT_FALSE(loaded.newPassword);
    }
}

TYPED_TEST(PhoneBookTest, ListsMoreThanFitsAtOnce) {
    std::vector<std::wstring> expected;
    for (int i = 100; i < 400; ++i) {
        expected.push_back(L"Entry " + std::to_wstring(i));
        this->ras_.entries[LowerCase(expected.back())].name = expected.back();
        this->ras_.connections[reinterpret_cast<HRASCONN>(ULONG_PTR(i))].entry = expected.back();
    }
    std::vector<std::wstring> names;
    EXPECT_EQ(0u, this->phoneBook_.List(names));
    EXPECT_EQ(expected, names);
    for (int release = 0; release < 4; ++release) {
        this->ras_.release = release;
        std::vector<DialConnection> connections;
        EXPECT_EQ(0u, this->dialUp_->Connections(connections));
        ASSERT_EQ(300u, connections.size()) << release;
        EXPECT_EQ(L"Entry 399", connections.back().entry);
        EXPECT_EQ(reinterpret_cast<HRASCONN>(ULONG_PTR(399)), connections.back().handle);
    }
    EXPECT_EQ(L"dial-up error 678", this->dialUp_->ErrorText(678));
    EXPECT_EQ(L"", this->dialUp_->ErrorText(0));
    EXPECT_NE(L"", this->dialUp_->ErrorText(ERROR_ACCESS_DENIED));
}

using WidePhoneBookTest = PhoneBookTest<WideRas>;

TEST_F(WidePhoneBookTest, KeepsWhatItHasNoNameFor) {
    PhoneBookDraft draft = FullDraft();
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    FakeEntry& stored = *ras_.Find(L"Provider");
    auto* entry = reinterpret_cast<WideRas::Entry*>(stored.image.data());
    entry->dwIdleDisconnectSeconds = 600;
    entry->dwfOptions |= RASEO_RequireEncryptedPw;
    // Alternative numbers stand behind the structure.
    stored.image.resize(stored.image.size() + 10'000, 0xAB);

    ASSERT_EQ(0u, phoneBook_.Load(L"Provider", draft));
    draft.record.phoneNumber = L"5550199";
    draft.record.address = {};
    draft.record.alternateWins = {};
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    entry = reinterpret_cast<WideRas::Entry*>(stored.image.data());
    EXPECT_EQ(600u, entry->dwIdleDisconnectSeconds);
    EXPECT_EQ(0xAB, stored.image[sizeof(*entry) + 9'999]);
    EXPECT_EQ(
        DWORD{RASEO_RequireEncryptedPw | RASEO_UseCountryAndAreaCodes | RASEO_IpHeaderCompression},
        entry->dwfOptions);
    EXPECT_EQ(L"secret", stored.password); // not put again
}

TEST_F(WidePhoneBookTest, SetsKeepsAndRemovesPasswords) {
    PhoneBookDraft draft = FullDraft();
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    draft.credentials.userName = L"joe";
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    EXPECT_EQ(L"joe", ras_.Find(L"Provider")->userName);
    EXPECT_EQ(L"secret", ras_.Find(L"Provider")->password);
    // A new entry takes the settings along, not the password that nobody can read.
    PhoneBookDraft other;
    ASSERT_EQ(0u, phoneBook_.Load(L"Provider", other));
    other.name = L"Other";
    ASSERT_EQ(0u, phoneBook_.Save(other));
    EXPECT_FALSE(other.credentials.hasPassword);
    EXPECT_EQ(L"joe", ras_.Find(L"Other")->userName);
    EXPECT_EQ(std::nullopt, ras_.Find(L"Other")->password);
    EXPECT_EQ(L"secret", ras_.Find(L"Provider")->password);
    draft.newPassword.emplace();
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    EXPECT_EQ(std::nullopt, ras_.Find(L"Provider")->password);
    EXPECT_FALSE(draft.credentials.hasPassword);
    draft.credentials.userName = L"jim";
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    EXPECT_EQ(std::nullopt, ras_.Find(L"Provider")->password);
}

TEST_F(WidePhoneBookTest, LeavesThePhoneBookAsItWasWhenSavingFails) {
    PhoneBookDraft draft = FullDraft();
    ras_.setCredentialsError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, phoneBook_.Save(draft));
    EXPECT_TRUE(ras_.entries.empty());
    EXPECT_EQ(L"secret", draft.newPassword->Text()); // for the next attempt

    ras_.setCredentialsError = 0;
    ASSERT_EQ(0u, phoneBook_.Save(draft));
    const FakeEntry before = *ras_.Find(L"Provider");
    draft.record.phoneNumber = L"1";
    draft.newPassword = ZelBase::WideSecretText(L"other");
    ras_.setCredentialsError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, phoneBook_.Save(draft));
    EXPECT_EQ(before.image, ras_.Find(L"Provider")->image);
    ras_.setEntryError = ERROR_CANNOT_WRITE_PHONEBOOK;
    EXPECT_EQ(DWORD{ERROR_CANNOT_WRITE_PHONEBOOK}, phoneBook_.Save(draft));
    ras_.listError = ERROR_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, phoneBook_.Save(draft));
    EXPECT_EQ(L"secret", ras_.Find(L"Provider")->password);

    PhoneBookDraft untouched = FullDraft();
    EXPECT_EQ(DWORD{ERROR_CANNOT_FIND_PHONEBOOK_ENTRY}, phoneBook_.Load(L"Nobody", untouched));
    EXPECT_EQ(DWORD{ERROR_CANNOT_FIND_PHONEBOOK_ENTRY}, phoneBook_.Load(L"", untouched));
    EXPECT_EQ(L"5550100", untouched.record.phoneNumber);
    for (const std::wstring& name : {L""s, L"a/b"s, L"a\0b"s}) {
        untouched.name = name;
        ras_.Reset();
        EXPECT_EQ(DWORD{ERROR_INVALID_NAME}, phoneBook_.Save(untouched));
        EXPECT_TRUE(ras_.entries.empty());
    }
}

TEST_F(WidePhoneBookTest, CreatesEntriesForTheDeviceThatIsThere) {
    EXPECT_EQ(0u, phoneBook_.Create(L"One", L"1", L""));
    EXPECT_EQ(0u, phoneBook_.Create(L"Two", L"2", L"wan miniport"));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, phoneBook_.Create(L"ONE", L"1", L""));
    EXPECT_EQ(DWORD{ERROR_DEVICE_DOES_NOT_EXIST}, phoneBook_.Create(L"x", L"1", L"None"));
    for (const std::wstring& number : {std::wstring(129, L'1'), L"1\r\n2"s, L"1\0002"s}) {
        EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, phoneBook_.Create(L"x", number, L""));
    }
    PhoneBookDraft draft;
    ASSERT_EQ(0u, phoneBook_.Load(L"One", draft));
    EXPECT_EQ(L"Modem 56K", draft.record.deviceName);
    EXPECT_TRUE(draft.record.usesRemoteGateway); // what the system starts from
    ASSERT_EQ(0u, phoneBook_.Load(L"Two", draft));
    EXPECT_EQ(L"vpn", draft.record.deviceType);
    const auto* entry = reinterpret_cast<const WideRas::Entry*>(ras_.Find(L"Two")->image.data());
    EXPECT_EQ(DWORD{RASET_Vpn}, entry->dwType);
    EXPECT_EQ(DWORD{RASFP_Ppp}, entry->dwFramingProtocol);

    ras_.devices = {{L"Cable", L"PARALLEL"}};
    EXPECT_EQ(0u, phoneBook_.Create(L"Three", L"3", L""));
    ras_.devices.clear();
    EXPECT_EQ(DWORD{ERROR_DEVICE_DOES_NOT_EXIST}, phoneBook_.Create(L"Four", L"4", L""));
    EXPECT_EQ(3u, ras_.entries.size());
    // No phone book yet: there is nothing to list, and the first entry makes one.
    ras_.listError = ERROR_CANNOT_OPEN_PHONEBOOK;
    bool exists = true;
    EXPECT_EQ(0u, phoneBook_.Exists(L"One", exists));
    EXPECT_FALSE(exists);
}

TEST_F(WidePhoneBookTest, FindsTheCountryOfACode) {
    const auto countryOf = [this](unsigned long code) {
        PhoneBookDraft draft = FullDraft();
        draft.record.countryCode = code;
        phoneBook_.Save(draft);
        return reinterpret_cast<const WideRas::Entry*>(ras_.Find(L"Provider")->image.data())
            ->dwCountryID;
    };
    EXPECT_EQ(44u, countryOf(44));
    EXPECT_EQ(1u, countryOf(1));
    EXPECT_EQ(0u, countryOf(0));
    EXPECT_EQ(999u, countryOf(999));
    ras_.countries = {{1, 5}, {205, 4}, {206, 4}, {4, 3}};
    EXPECT_EQ(205u, countryOf(4));
}

TEST(RasApiTest, RefusesEverythingWhereThereIsNoDialUpNetworking) {
    const RasDialUp<WideRas> dialUp(RasApi<WideRas>::Missing());
    std::vector<std::wstring> names;
    EXPECT_EQ(DWORD{ERROR_MOD_NOT_FOUND}, dialUp.Entries(names));
    EXPECT_EQ(DWORD{ERROR_MOD_NOT_FOUND}, dialUp.DeleteEntry(L"x"));
    EXPECT_NE(L"", dialUp.ErrorText(ERROR_MOD_NOT_FOUND));
    // A library that has other functions.
    const RasDialUp<NarrowRas> lacking(
        RasApi<NarrowRas>::Of(ZelBase::SystemLibrary("kernel32.dll")));
    EXPECT_EQ(DWORD{ERROR_PROC_NOT_FOUND}, lacking.Entries(names));
}

TEST(DefaultConnectionTest, IsKeptUnderTheKeysThatExist) {
    const test::ScratchHive user(RegistryHive::kCurrentUser);
    const std::wstring autoDial = L"Software\\Microsoft\\RAS AutoDial\\Default";
    const auto atRemoteAccess = [&] {
        return user.Open(L"RemoteAccess").ReadText(L"InternetProfile");
    };
    const auto atAutoDial = [&] { return user.Open(autoDial).ReadText(L"DefaultInternet"); };
    EXPECT_EQ(L"", DefaultConnection());
    EXPECT_TRUE(SetDefaultConnection(L""));
    user.Create(L"RemoteAccess");
    EXPECT_TRUE(SetDefaultConnection(L"Old"));
    EXPECT_EQ(L"Old", atRemoteAccess());
    EXPECT_FALSE(user.Open(autoDial).IsOpen());

    user.Create(autoDial);
    EXPECT_EQ(L"Old", DefaultConnection());
    EXPECT_TRUE(SetDefaultConnection(L"New"));
    EXPECT_EQ(L"New", atRemoteAccess());
    EXPECT_EQ(L"New", atAutoDial());
    for (const wchar_t* refused : {L"DefaultInternet", L"InternetProfile"}) {
        EXPECT_FALSE(SetDefaultConnection(L"Third", test::RefuseValue(refused)));
        EXPECT_FALSE(SetDefaultConnection(L"", test::RefuseValue(refused)));
        EXPECT_EQ(L"New", atRemoteAccess());
        EXPECT_EQ(L"New", atAutoDial());
    }
    EXPECT_TRUE(SetDefaultConnection(L""));
    EXPECT_EQ(L"", DefaultConnection());

    test::DeleteTree(RegistryHive::kCurrentUser, L"RemoteAccess");
    EXPECT_TRUE(SetDefaultConnection(L"Newer"));
    EXPECT_EQ(L"Newer", DefaultConnection());
    EXPECT_FALSE(user.Open(L"RemoteAccess").IsOpen());
    test::DeleteTree(RegistryHive::kCurrentUser, L"Software");
    EXPECT_TRUE(SetDefaultConnection(L"First"));
    EXPECT_EQ(L"First", atRemoteAccess());
    EXPECT_EQ(L"First", atAutoDial());
}

} // namespace
} // namespace tervane
