// Real keys below HKEY_CURRENT_USER. Each test runs with the functions of this system and again
// with the wide ones failing, as they do on the 9x family.

#include "platform/registry/RegistryKey.h"
#include "tests/support/ProcessUsage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace tervane {
namespace {

constexpr RegistryHive kHive = RegistryHive::kCurrentUser;
const std::wstring kRoot = L"Software\\TervaneTest\\RegistryKey";

template <typename Function>
struct Missing;
template <typename... Arguments>
struct Missing<LSTATUS(WINAPI*)(Arguments...)> {
    static LSTATUS WINAPI Fail(Arguments...) { return ERROR_CALL_NOT_IMPLEMENTED; }
};
template <typename Function>
void Fail(Function& function) {
    function = Missing<Function>::Fail;
}

const RegistryApi& NarrowOnly() {
    static const RegistryApi api = [] {
        RegistryApi narrow = RegistryApi::System();
        Fail(narrow.openKeyWide);
        Fail(narrow.createKeyWide);
        Fail(narrow.deleteKeyWide);
        Fail(narrow.enumKeyWide);
        Fail(narrow.enumValueWide);
        Fail(narrow.queryValueWide);
        Fail(narrow.setValueWide);
        Fail(narrow.deleteValueWide);
        // There, deleting a key takes its subkeys along.
        narrow.deleteKeyNarrow = RegDeleteTreeA;
        return narrow;
    }();
    return api;
}

class RegistryKeyTest : public testing::TestWithParam<bool> {
protected:
    RegistryKeyTest() { RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str()); }
    ~RegistryKeyTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str()); }

    static const RegistryApi& Api() { return GetParam() ? NarrowOnly() : RegistryApi::System(); }
    static RegistryKey Open(const std::wstring& path = kRoot, REGSAM access = KEY_READ) {
        return RegistryKey::Open(kHive, path, access, Api());
    }
    static RegistryKey Create(const std::wstring& path = kRoot) {
        return RegistryKey::Create(kHive, path, KEY_READ | KEY_WRITE, Api());
    }
};

INSTANTIATE_TEST_SUITE_P(Forms, RegistryKeyTest, testing::Values(false, true),
                         [](const auto& form) { return form.param ? "Narrow" : "Wide"; });

TEST_P(RegistryKeyTest, WritesAndReadsEveryType) {
    const RegistryKey key = Create();
    ASSERT_TRUE(key.IsOpen());
    const std::vector<std::wstring> texts = {L"one", L"t w o", L"é"};
    const RegistryBytes bytes = {0, 1, 2, 254, 255};
    EXPECT_TRUE(key.WriteText(L"", L"default"));
    EXPECT_TRUE(key.WriteText(L"text", L"Grüße"));
    EXPECT_TRUE(key.WriteExpandableText(L"expandable", L"%TEMP%\\x"));
    EXPECT_TRUE(key.WriteTexts(L"texts", texts));
    EXPECT_TRUE(key.WriteTexts(L"no texts", {}));
    EXPECT_TRUE(key.WriteNumber(L"number", 0xFEDCBA98));
    EXPECT_TRUE(key.WriteBytes(L"bytes", bytes));
    EXPECT_TRUE(key.WriteBytes(L"no bytes", {}));

    EXPECT_EQ(key.ReadText(L""), L"default");
    EXPECT_EQ(key.ReadText(L"text"), L"Grüße");
    EXPECT_EQ(key.ReadText(L"expandable"), L"%TEMP%\\x");
    EXPECT_EQ(key.TypeOf(L"expandable"), static_cast<DWORD>(REG_EXPAND_SZ));
    EXPECT_EQ(key.ReadTexts(L"texts"), texts);
    EXPECT_EQ(key.ReadTexts(L"no texts"), std::vector<std::wstring>());
    EXPECT_EQ(key.ReadNumber(L"number"), 0xFEDCBA98u);
    EXPECT_EQ(key.Read(L"bytes")->bytes, bytes);
    EXPECT_EQ(key.Read(L"no bytes")->type, static_cast<DWORD>(REG_BINARY));
    EXPECT_TRUE(key.Read(L"no bytes")->bytes.empty());

    EXPECT_EQ(key.ReadText(L"number"), std::nullopt);
    EXPECT_EQ(key.ReadTexts(L"text"), std::nullopt);
    EXPECT_EQ(key.ReadNumber(L"no texts"), std::nullopt);
    EXPECT_EQ(key.ReadText(L"missing"), std::nullopt);
    EXPECT_EQ(key.TypeOf(L"missing"), std::nullopt);
}

TEST_P(RegistryKeyTest, ReadsWhatBadProgramsStored) {
    using namespace std::string_literals;
    using Texts = std::vector<std::wstring>;
    Create();
    const auto store = [&](DWORD type, const std::wstring& characters, std::size_t bytes) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kRoot.c_str(), L"x", type, characters.data(),
                        static_cast<DWORD>(bytes));
        return Open();
    };
    EXPECT_EQ(store(REG_SZ, L"abc", 6).ReadText(L"x"), L"abc"); // without an end
    EXPECT_EQ(store(REG_SZ, L"", 0).ReadText(L"x"), L"");
    EXPECT_EQ(store(REG_SZ, L"ab\0cd"s, 12).ReadText(L"x"), L"ab");
    // What half a character becomes, the narrow functions decide for themselves.
    EXPECT_EQ(store(REG_SZ, L"abc", 5).ReadText(L"x").value_or(L"").substr(0, 2), L"ab");
    EXPECT_EQ(store(REG_MULTI_SZ, L"a\0b"s, 6).ReadTexts(L"x"), (Texts{L"a", L"b"}));
    EXPECT_EQ(store(REG_MULTI_SZ, L"a\0b\0"s, 8).ReadTexts(L"x"), (Texts{L"a", L"b"}));
    EXPECT_EQ(store(REG_MULTI_SZ, L"a\0\0b\0\0"s, 12).ReadTexts(L"x"), (Texts{L"a", L"", L"b"}));
    EXPECT_EQ(store(REG_MULTI_SZ, L"\0\0"s, 4).ReadTexts(L"x"), Texts());
    EXPECT_EQ(store(REG_DWORD, L"\x0201", 2).ReadNumber(L"x"), 0x0201u);
    EXPECT_EQ(store(REG_DWORD, L"12345", 10).ReadNumber(L"x"), std::nullopt);
    EXPECT_EQ(store(REG_BINARY, L"\x0201\x0403", 4).ReadNumber(L"x"), 0x04030201u);
}

TEST_P(RegistryKeyTest, RefusesWhatCouldNotBeReadBack) {
    const RegistryKey key = Create();
    const std::wstring zero(L"a\0b", 3);
    ASSERT_TRUE(key.WriteText(L"old", L"kept"));
    EXPECT_FALSE(key.WriteText(L"old", zero));
    EXPECT_FALSE(key.WriteTexts(L"old", std::vector<std::wstring>{L"a", L""}));
    EXPECT_FALSE(key.WriteTexts(L"old", std::vector<std::wstring>{zero}));
    EXPECT_FALSE(Open().WriteNumber(L"old", 1)); // opened for reading
    EXPECT_EQ(key.ReadText(L"old"), L"kept");
    // A name with a zero character must not stand for the name before it.
    EXPECT_FALSE(key.DeleteValue(std::wstring(L"old\0x", 5)));
    EXPECT_FALSE(Open(kRoot + zero.substr(1, 1) + L"x").IsOpen());
    EXPECT_EQ(key.ReadText(L"old"), L"kept");
}

TEST_P(RegistryKeyTest, CreatesAndDeletesKeys) {
    ASSERT_TRUE(Create(kRoot + L"\\a\\b\\c").IsOpen());
    EXPECT_TRUE(Open(kRoot + L"\\a").OpenSubKey(L"b\\c").IsOpen());
    EXPECT_FALSE(RegistryKey::Delete(kHive, kRoot + L"\\a", Api()));
    EXPECT_TRUE(Open(kRoot + L"\\a\\b\\c").IsOpen());
    EXPECT_TRUE(RegistryKey::Delete(kHive, kRoot + L"\\a\\b\\c", Api()));
    EXPECT_FALSE(RegistryKey::Delete(kHive, kRoot + L"\\a\\b\\c", Api()));
    EXPECT_FALSE(Open(kRoot + L"\\a\\b\\c").IsOpen());
    EXPECT_FALSE(RegistryKey::Delete(kHive, L"", Api()));
    EXPECT_FALSE(RegistryKey::Delete(kHive, L"\\", Api()));
}

TEST_P(RegistryKeyTest, ListsThousandsOfLongNamesInOrder) {
    const RegistryKey key = Create();
    // A value's name may be far longer than a key's.
    const std::wstring longName(10'000, L'n');
    ASSERT_TRUE(key.WriteNumber(longName, 7));
    EXPECT_EQ(key.ValueNames(), std::vector<std::wstring>{longName});
    EXPECT_EQ(key.ReadNumber(longName), 7u);
    EXPECT_TRUE(key.DeleteValue(longName));
    EXPECT_FALSE(key.DeleteValue(longName));

    const std::wstring prefix(200, L'k');
    std::vector<std::wstring> names;
    for (int i = 1000; i < 3000; ++i) {
        names.push_back(prefix + std::to_wstring(i));
        ASSERT_TRUE(key.WriteNumber(names.back(), 1));
        ASSERT_TRUE(Create(kRoot + L"\\" + names.back()).IsOpen());
    }
    std::vector<std::wstring> found = key.ValueNames();
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, names);
    EXPECT_EQ(Open().SubKeyNames(), names);
}

TEST_P(RegistryKeyTest, LeavesNoKeyOpen) {
    const RegistryKey key = Create();
    ASSERT_TRUE(key.WriteText(L"text", L"x"));
    const std::size_t before = test::OpenHandleCount();
    ASSERT_GT(before, 0u);
    for (int i = 0; i < 200; ++i) {
        RegistryKey other = Open();
        other = Create(kRoot + L"\\sub");
        EXPECT_FALSE(Open(kRoot + L"\\missing").OpenSubKey(L"x").HasSubKeys());
        RegistryKey::Delete(kHive, kRoot + L"\\sub", Api());
    }
    EXPECT_EQ(test::OpenHandleCount(), before);
}

TEST(RegistryKey, ClosedKeyHoldsNothing) {
    const RegistryKey key;
    EXPECT_TRUE(key.SubKeyNames().empty());
    EXPECT_TRUE(key.ValueNames().empty());
    EXPECT_EQ(key.ReadText(L""), std::nullopt);
    EXPECT_EQ(key.ReadNumber(L""), std::nullopt);
    EXPECT_FALSE(key.WriteNumber(L"", 1));
    EXPECT_FALSE(key.DeleteValue(L""));
    EXPECT_FALSE(key.OpenSubKey(L"").IsOpen());
}

TEST(RegistryKey, KnowsTheHives) {
    for (short number = 0; number <= 4; ++number) {
        ASSERT_TRUE(RegistryHiveOf(number));
        EXPECT_TRUE(RegistryKey::Open(*RegistryHiveOf(number), L"").IsOpen()) << number;
    }
    EXPECT_TRUE(RegistryKey::Open(*RegistryHiveOf(2), L"Software\\Microsoft").IsOpen());
    for (short number : {-1, 5, 32767, -32768}) {
        EXPECT_FALSE(RegistryHiveOf(number)) << number;
    }
}

// "???" in the code page could be the name of something else, which must not be touched.
TEST(RegistryKey, NarrowFormNeverTouchesAnotherName) {
    RegistryKey::Create(kHive, kRoot + L"\\???");
    const RegistryKey key = RegistryKey::Open(kHive, kRoot, KEY_READ | KEY_WRITE, NarrowOnly());
    ASSERT_TRUE(key.WriteText(L"???", L"kept"));
    const std::wstring chinese = L"\x4E2D\x6587\x5B57";
    EXPECT_FALSE(key.DeleteValue(chinese));
    EXPECT_FALSE(key.WriteText(chinese, L"x"));
    EXPECT_FALSE(key.WriteText(L"???", chinese));
    EXPECT_FALSE(RegistryKey::Delete(kHive, kRoot + L"\\" + chinese, NarrowOnly()));
    EXPECT_EQ(key.ReadText(L"???"), L"kept");
    EXPECT_TRUE(key.OpenSubKey(L"???").IsOpen());
    RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str());
}

DWORD growing = 0;

// Answers with ever larger sizes at first, as while another program appends to the value.
LSTATUS WINAPI QueryGrowing(HKEY, const wchar_t*, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    *type = REG_BINARY;
    const DWORD room = *size;
    growing = growing < 5000 ? growing + 1000 : growing;
    *size = growing;
    if (room < *size) {
        return ERROR_MORE_DATA;
    }
    std::fill_n(data, *size, BYTE{9});
    return ERROR_SUCCESS;
}

TEST(RegistryKey, ReadsAValueThatGrowsMeanwhile) {
    RegistryApi api = RegistryApi::System();
    api.queryValueWide = QueryGrowing;
    growing = 0;
    const auto value = RegistryKey::Open(kHive, L"", KEY_READ, api).Read(L"x");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->bytes, RegistryBytes(5000, 9));
}

} // namespace
} // namespace tervane
