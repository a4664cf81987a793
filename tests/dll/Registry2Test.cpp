// Registry2 as scripts use it: late-bound, on real keys below HKEY_CURRENT_USER.

#include "support/Classes.h"
#include "support/ObjectTest.h"
#include "support/ScratchRegistry.h"

#include <climits>

namespace tervane::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr int kUser = 1;
const std::wstring kRoot = L"Software\\TervaneTest\\Registry2";

class Registry2Test : public ObjectTest {
protected:
    Registry2Test() : ObjectTest(L"Registry2") {
        RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str());
        RegistryKey::Create(RegistryHive::kCurrentUser, kRoot);
    }
    ~Registry2Test() override { RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str()); }

    // Of the user's hive, with paths below the test's own key.
    void UserAnswers(const std::vector<Exchange>& exchanges) {
        for (const Exchange& exchange : exchanges) {
            std::vector<Argument> arguments = {kUser, kRoot};
            if (!exchange.arguments.empty()) {
                arguments[1] = kRoot + std::wstring(exchange.arguments[0].value.Text());
                arguments.insert(arguments.end(), exchange.arguments.begin() + 1,
                                 exchange.arguments.end());
            }
            Answers({{exchange.member, arguments, exchange.answer}});
        }
    }
    static void Store(const wchar_t* name, DWORD type, const void* data, DWORD size) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kRoot.c_str(), name, type, data, size);
    }
    static RegistryKey Create(const std::wstring& key) {
        return RegistryKey::Create(RegistryHive::kCurrentUser, kRoot + L"\\" + key);
    }
    IRegistry2* Direct() { return static_cast<IRegistry2*>(object_.Get()); }
};

VARIANT Double(double number) {
    VARIANT value = {};
    value.vt = VT_R8;
    value.dblVal = number;
    return value;
}

TEST_F(Registry2Test, WritesByTheKindOfValueAndReadsBack) {
    UserAnswers({{L"SetValue", {L"", L"text", L"Grüße"}, L"true"},
                 {L"GetValue", {L"", L"text"}, L"Grüße"},
                 {L"GetValueType", {L"", L"text"}, L"2"},
                 {L"SetValue", {L"", L"texts", Texts{L"first", L"second"}}, L"true"},
                 {L"GetValue", {L"", L"texts"}, L"[first, second]"},
                 {L"GetValueType", {L"", L"texts"}, L"3"},
                 {L"SetValue", {L"", L"number", 7}, L"true"},
                 {L"GetValue", {L"", L"number"}, L"7u"},
                 {L"GetValueType", {L"", L"number"}, L"1"},
                 // JScript's large numbers are doubles.
                 {L"SetValue", {L"", L"large", Double(4294967295.0)}, L"true"},
                 {L"GetValue", {L"", L"large"}, L"4294967295u"}});
    EXPECT_EQ(7u, Create(L"").ReadNumber(L"number"));
    const std::wstring huge(300'000, L'h');
    UserAnswers({{L"SetValue", {L"", L"huge", huge}, L"true"},
                 {L"GetValue", {L"", L"huge"}, huge},
                 {L"DoesKeyExist", {huge}, L"false"},
                 {L"CreateKey", {L"\\" + huge}, L"false"},
                 {L"DeleteKey", {huge}, L"false"},
                 {L"GetMatchingSubKeys", {L"", huge, huge}, L"[]"}});
}

TEST_F(Registry2Test, RefusesValuesItCannotStore) {
    UserAnswers({{L"SetValue", {L"", L"x", L"old"}, L"true"}});
    VARIANT null = {};
    null.vt = VT_NULL;
    std::vector<Variant> mixed;
    mixed.push_back(std::move(*Variant::FromText(L"a")));
    mixed.push_back(Variant::FromLong(1));
    SAFEARRAYBOUND bounds[2] = {{1, 0}, {1, 0}};
    const Variant matrix =
        Variant::FromArray(UniqueSafeArray(SafeArrayCreate(VT_VARIANT, 2, bounds)));
    const Argument refused[] = {null,
                                Double(4294967296.0),
                                Texts{L"a", L""},
                                std::wstring(L"a\0b", 3),
                                MakeArray(std::move(mixed))->Get(),
                                matrix.Get(),
                                object_}; // an object without "length"
    for (const Argument& value : refused) {
        UserAnswers({{L"SetValue", {L"", L"x", value}, L"false"}});
    }
    UserAnswers({{L"GetValue", {L"", L"x"}, L"old"},
                 {L"SetValue", {L"\\missing", L"x", L"y"}, L"false"},
                 {L"DoesKeyExist", {L"\\missing"}, L"false"}});
}

TEST_F(Registry2Test, TellsTypesAndDeliversTheirValues) {
    const BYTE bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const struct {
        const wchar_t* name;
        DWORD type;
        DWORD size;
        const wchar_t* told;
        const wchar_t* value;
    } rows[] = {{L"binary", REG_BINARY, 4, L"4", L"67305985u"}, // 0x04030201
                {L"long binary", REG_BINARY, 8, L"4", L"empty"},
                {L"quad", REG_QWORD, 8, L"0", L"empty"},
                {L"none", REG_NONE, 4, L"0", L"empty"},
                {L"big", REG_DWORD_BIG_ENDIAN, 4, L"0", L"empty"}};
    for (const auto& row : rows) {
        Store(row.name, row.type, bytes, row.size);
        UserAnswers({{L"GetValueType", {L"", row.name}, row.told},
                     {L"GetValue", {L"", row.name}, row.value},
                     {L"DoesValueExist", {L"", row.name}, L"true"}});
    }
    Store(L"expandable", REG_EXPAND_SZ, L"%PATH%", 14);
    UserAnswers({{L"GetValueType", {L"", L"expandable"}, L"2"},
                 {L"GetValue", {L"", L"expandable"}, L"%PATH%"},
                 {L"GetValueType", {L"", L"missing"}, L"0"},
                 {L"GetValue", {L"", L"missing"}, L"empty"},
                 {L"DoesValueExist", {L"", L"missing"}, L"false"}});
}

TEST_F(Registry2Test, ReadsTextsFromAKeyThatGrantsItsValuesOnly) {
    UserAnswers({{L"SetValue", {L"", L"text", L"Grüße"}, L"true"},
                 {L"SetValue", {L"", L"texts", Texts{L"first", L"second"}}, L"true"},
                 {L"SetValue", {L"", L"number", 7}, L"true"}});
    UniqueRegistryKey key;
    ASSERT_EQ(0, RegOpenKeyExW(HKEY_CURRENT_USER, kRoot.c_str(), 0, WRITE_DAC, key.Put()));
    GrantOnly(key.Get(), KEY_QUERY_VALUE);
    UserAnswers({{L"GetValue", {L"", L"text"}, L"Grüße"},
                 {L"GetValue", {L"", L"texts"}, L"[first, second]"},
                 {L"GetValue", {L"", L"number"}, L"empty"},
                 {L"GetValueType", {L"", L"number"}, L"1"}});
    GrantOnly(key.Get(), KEY_SET_VALUE);
    UserAnswers({{L"GetValue", {L"", L"text"}, L"empty"}});
    GrantOnly(key.Get(), KEY_ALL_ACCESS);
    UserAnswers({{L"GetValue", {L"", L"number"}, L"7u"}});
}

TEST_F(Registry2Test, ListsCreatesAndDeletes) {
    UserAnswers({{L"GetSubKeyNames", {}, L"[]"},
                 {L"CreateKey", {L"\\b\\c"}, L"true"},
                 {L"CreateKey", {L"\\b\\c"}, L"true"},
                 {L"CreateKey", {L"\\a"}, L"true"},
                 {L"GetSubKeyNames", {}, L"[a, b]"},
                 {L"DeleteKey", {L"\\b"}, L"false"},
                 {L"DoesKeyExist", {L"\\b\\c"}, L"true"},
                 {L"DeleteKey", {L"\\b\\c"}, L"true"},
                 {L"DeleteKey", {L"\\b"}, L"true"},
                 {L"SetValue", {L"", L"", L"default"}, L"true"},
                 {L"GetValueNames", {}, L"[]"}, // one, without a name
                 {L"SetValue", {L"", L"name", 1}, L"true"},
                 {L"DeleteValue", {L"", L""}, L"true"},
                 {L"GetValueNames", {}, L"[name]"},
                 {L"DeleteValue", {L"", L"name"}, L"true"},
                 {L"DeleteValue", {L"", L"name"}, L"false"}});
    Answers({{L"DeleteKey", {kUser, L""}, L"false"}});
}

TEST_F(Registry2Test, FindsSubKeysByTheTextOfAValue) {
    const std::pair<const wchar_t*, const wchar_t*> keys[] = {
        {L"1", L"Fast Ethernet"}, {L"2", L"Modem"}, {L"3", L"ethernet"}, {L"4", L"An Ethernet"}};
    for (const auto& [key, text] : keys) {
        Create(key).WriteText(L"Desc", text);
    }
    Create(L"number").WriteNumber(L"Desc", 1);
    Create(L"without");
    UserAnswers({{L"GetMatchingSubKeys", {L"", L"Desc", L".*Ethernet"}, L"[1, 4]"},
                 {L"GetMatchingSubKeys", {L"", L"Desc", L"Ethernet"}, L"[]"},
                 {L"GetMatchingSubKeys", {L"", L"Desc", L""}, L"[1, 2, 3, 4]"},
                 {L"GetMatchingSubKeys", {L"", L"Desc", L"("}, L"[]"},
                 {L"GetMatchingSubKeys", {L"", L"Desc", L"((.+)+)+!"}, L"[]"},
                 {L"GetMatchingSubKeys", {L"\\no", L"Desc", L""}, L"[]"}});
}

TEST_F(Registry2Test, TakesUnknownHivesForMissingKeysAndNullForEmptyTexts) {
    for (const int hive : {5, -1, SHRT_MAX}) {
        Answers({{L"DoesKeyExist", {hive, L""}, L"false"},
                 {L"GetValueType", {hive, L"", L""}, L"0"},
                 {L"GetValue", {hive, L"", L""}, L"empty"},
                 {L"GetSubKeyNames", {hive, L""}, L"[]"},
                 {L"CreateKey", {hive, L""}, L"false"}});
    }
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(S_OK, Direct()->DoesKeyExist(kUser, nullptr, &exists));
    EXPECT_EQ(VARIANT_TRUE, exists);
}

TEST_F(Registry2Test, ChangesNothingWithoutAPlaceForTheResult) {
    const UniqueBstr path = MakeBstr(kRoot);
    const UniqueBstr name = MakeBstr(L"written");
    EXPECT_EQ(E_POINTER, Direct()->SetValue(kUser, path.Get(), name.Get(),
                                            Variant::FromLong(1).Get(), nullptr));
    EXPECT_EQ(E_POINTER, Direct()->DeleteKey(kUser, path.Get(), nullptr));
    UserAnswers({{L"GetValue", {L"", L"written"}, L"empty"}, {L"DoesKeyExist", {}, L"true"}});
}

} // namespace
} // namespace tervane::test
