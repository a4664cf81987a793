// Registry2 as scripts use it: late-bound, on real keys below HKEY_CURRENT_USER.

#include "platform/registry/RegistryKey.h"
#include "support/HandleCount.h"
#include "support/ScratchRegistry.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

#include <windows.h>

#define PSAPI_VERSION 2 // the functions that lie in kernel32
#include <psapi.h>

namespace tervane::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr int kUser = 1;
const std::wstring kRoot = L"Software\\TervaneTest\\Registry2";

class Registry2Test : public testing::Test {
protected:
    Registry2Test() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str());
        RegistryKey::Create(RegistryHive::kCurrentUser, kRoot);
    }
    ~Registry2Test() override { RegDeleteTreeW(HKEY_CURRENT_USER, kRoot.c_str()); }

    template <typename... More>
    CallResult Ask(const wchar_t* method, const std::wstring& path, const More&... more) {
        CallResult result =
            Call(object.Get(), method, {Argument(kUser), Argument(path), Argument(more)...});
        EXPECT_EQ(result.status, S_OK) << method;
        return result;
    }
    template <typename Value>
    long Set(const wchar_t* name, const Value& value) {
        return Ask(L"SetValue", kRoot, name, value).Number();
    }
    CallResult Get(const wchar_t* name) { return Ask(L"GetValue", kRoot, name); }
    static void Store(const wchar_t* name, DWORD type, const void* data, DWORD size) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kRoot.c_str(), name, type, data, size);
    }
    IRegistry2* Direct() { return static_cast<IRegistry2*>(object.Get()); }

    Apartment apartment;
    ComPtr<IDispatch> object = TestComponent::Get().Create(__uuidof(::Registry2));
};

TEST_F(Registry2Test, WritesByTheKindOfValueAndReadsBack) {
    EXPECT_EQ(Set(L"text", L"Grüße"), -1);
    EXPECT_EQ(Get(L"text").Text(), L"Grüße");
    EXPECT_EQ(Ask(L"GetValueType", kRoot, L"text").Number(), 2);

    const Texts two = {L"first", L"second"};
    EXPECT_EQ(Set(L"texts", MakeTextArray(two)->Get()), -1);
    const CallResult texts = Get(L"texts");
    EXPECT_EQ(texts.value.Type(), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(texts.Texts(), two);
    EXPECT_EQ(Ask(L"GetValueType", kRoot, L"texts").Number(), 3);

    EXPECT_EQ(Set(L"number", 7), -1);
    EXPECT_EQ(Get(L"number").value.Type(), VT_UI4);
    EXPECT_EQ(Get(L"number").Number(), 7);
    EXPECT_EQ(Ask(L"GetValueType", kRoot, L"number").Number(), 1);
    DWORD stored = 0;
    DWORD size = sizeof(stored);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, kRoot.c_str(), L"number", RRF_RT_REG_DWORD, nullptr,
                           &stored, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(stored, 7u);
    // JScript's large numbers are doubles.
    VARIANT large;
    large.vt = VT_R8;
    large.dblVal = 4294967295.0;
    EXPECT_EQ(Set(L"number", large), -1);
    EXPECT_EQ(Get(L"number").value.Get().ulVal, 0xFFFFFFFFu);
}

TEST_F(Registry2Test, RefusesValuesItCannotStore) {
    ASSERT_EQ(Set(L"x", L"old"), -1);
    VARIANT null;
    null.vt = VT_NULL;
    EXPECT_EQ(Set(L"x", null), 0);
    VARIANT tooLarge;
    tooLarge.vt = VT_R8;
    tooLarge.dblVal = 4294967296.0;
    EXPECT_EQ(Set(L"x", tooLarge), 0);
    EXPECT_EQ(Set(L"x", MakeTextArray(Texts{L"a", L""})->Get()), 0);
    EXPECT_EQ(Set(L"x", std::wstring(L"a\0b", 3)), 0);
    std::vector<Variant> mixed;
    mixed.push_back(std::move(*Variant::FromText(L"a")));
    mixed.push_back(Variant::FromLong(1));
    EXPECT_EQ(Set(L"x", MakeArray(std::move(mixed))->Get()), 0);
    SAFEARRAYBOUND bounds[2] = {{1, 0}, {1, 0}};
    const Variant matrix =
        Variant::FromArray(UniqueSafeArray(SafeArrayCreate(VT_VARIANT, 2, bounds)));
    EXPECT_EQ(Set(L"x", matrix.Get()), 0);
    const Variant self = Variant::FromObject(AddReference(object.Get()));
    EXPECT_EQ(Set(L"x", self.Get()), 0); // an object without "length"
    EXPECT_EQ(Get(L"x").Text(), L"old");
    EXPECT_EQ(Ask(L"SetValue", kRoot + L"\\missing", L"x", L"y").Number(), 0);
    EXPECT_EQ(Ask(L"DoesKeyExist", kRoot + L"\\missing").Number(), 0);
}

TEST_F(Registry2Test, TellsTypesAndDeliversTheirValues) {
    const BYTE bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    Store(L"binary", REG_BINARY, bytes, 4);
    Store(L"long binary", REG_BINARY, bytes, 8);
    Store(L"expandable", REG_EXPAND_SZ, L"%PATH%", 14);
    Store(L"quad", REG_QWORD, bytes, 8);
    Store(L"none", REG_NONE, bytes, 4);
    Store(L"big", REG_DWORD_BIG_ENDIAN, bytes, 4);
    const std::pair<const wchar_t*, long> types[] = {
        {L"binary", 4}, {L"long binary", 4}, {L"expandable", 2}, {L"quad", 0},
        {L"none", 0},   {L"big", 0},         {L"missing", 0}};
    for (const auto& [name, type] : types) {
        EXPECT_EQ(Ask(L"GetValueType", kRoot, name).Number(), type) << name;
        EXPECT_EQ(Ask(L"DoesValueExist", kRoot, name).Number(), name != types[6].first ? -1 : 0);
    }
    EXPECT_EQ(Get(L"binary").value.Type(), VT_UI4);
    EXPECT_EQ(Get(L"binary").Number(), 0x04030201);
    EXPECT_EQ(Get(L"expandable").Text(), L"%PATH%");
    for (const wchar_t* name : {L"long binary", L"quad", L"none", L"missing"}) {
        EXPECT_EQ(Get(name).value.Type(), VT_EMPTY) << name;
    }
}

TEST_F(Registry2Test, ReadsTextsFromAKeyThatGrantsItsValuesOnly) {
    const Texts two = {L"first", L"second"};
    Set(L"text", L"Grüße");
    Set(L"texts", MakeTextArray(two)->Get());
    Set(L"number", 7);
    UniqueRegistryKey key;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kRoot.c_str(), 0, WRITE_DAC, key.Put()), 0);
    GrantOnly(key.Get(), KEY_QUERY_VALUE);
    EXPECT_EQ(Get(L"text").Text(), L"Grüße");
    EXPECT_EQ(Get(L"texts").Texts(), two);
    EXPECT_EQ(Get(L"number").value.Type(), VT_EMPTY);
    EXPECT_EQ(Ask(L"GetValueType", kRoot, L"number").Number(), 1);
    GrantOnly(key.Get(), KEY_SET_VALUE);
    EXPECT_EQ(Get(L"text").value.Type(), VT_EMPTY);
    GrantOnly(key.Get(), KEY_ALL_ACCESS);
    EXPECT_EQ(Get(L"number").Number(), 7);
}

TEST_F(Registry2Test, ListsCreatesAndDeletes) {
    EXPECT_EQ(Ask(L"GetSubKeyNames", kRoot).value.Type(), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(Ask(L"CreateKey", kRoot + L"\\b\\c").Number(), -1);
    EXPECT_EQ(Ask(L"CreateKey", kRoot + L"\\b\\c").Number(), -1);
    EXPECT_EQ(Ask(L"CreateKey", kRoot + L"\\a").Number(), -1);
    EXPECT_EQ(Ask(L"GetSubKeyNames", kRoot).Texts(), (Texts{L"a", L"b"}));
    EXPECT_EQ(Ask(L"DeleteKey", kRoot + L"\\b").Number(), 0);
    EXPECT_EQ(Ask(L"DoesKeyExist", kRoot + L"\\b\\c").Number(), -1);
    EXPECT_EQ(Ask(L"DeleteKey", kRoot + L"\\b\\c").Number(), -1);
    EXPECT_EQ(Ask(L"DeleteKey", kRoot + L"\\b").Number(), -1);
    EXPECT_EQ(Ask(L"DeleteKey", L"").Number(), 0);

    ASSERT_EQ(Set(L"", L"default"), -1);
    ASSERT_EQ(Set(L"name", 1), -1);
    Texts names = Ask(L"GetValueNames", kRoot).Texts();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Texts{L"", L"name"}));
    EXPECT_EQ(Ask(L"DeleteValue", kRoot, L"name").Number(), -1);
    EXPECT_EQ(Ask(L"DeleteValue", kRoot, L"name").Number(), 0);
}

TEST_F(Registry2Test, FindsSubKeysByTheTextOfAValue) {
    const std::pair<const wchar_t*, const wchar_t*> keys[] = {
        {L"1", L"Fast Ethernet"}, {L"2", L"Modem"}, {L"3", L"ethernet"}, {L"4", L"An Ethernet"}};
    for (const auto& [key, text] : keys) {
        RegistryKey::Create(RegistryHive::kCurrentUser, kRoot + L"\\" + key)
            .WriteText(L"Desc", text);
    }
    RegistryKey::Create(RegistryHive::kCurrentUser, kRoot + L"\\number").WriteNumber(L"Desc", 1);
    RegistryKey::Create(RegistryHive::kCurrentUser, kRoot + L"\\without");
    auto matching = [&](const std::wstring& pattern) {
        return Ask(L"GetMatchingSubKeys", kRoot, L"Desc", pattern).Texts();
    };
    EXPECT_EQ(matching(L".*Ethernet"), (Texts{L"1", L"4"}));
    EXPECT_EQ(matching(L"Ethernet"), Texts());
    EXPECT_EQ(matching(L""), (Texts{L"1", L"2", L"3", L"4"}));
    EXPECT_EQ(matching(L"("), Texts());
    EXPECT_EQ(matching(L"((.+)+)+!"), Texts());
    EXPECT_EQ(Ask(L"GetMatchingSubKeys", kRoot + L"\\no", L"Desc", L"").value.Type(),
              VT_ARRAY | VT_VARIANT);
}

TEST_F(Registry2Test, UnknownHivesAreMissingKeys) {
    for (short hive : {short{5}, short{-1}, short{SHRT_MAX}}) {
        VARIANT_BOOL flag = VARIANT_TRUE;
        Variant value;
        long type = 9;
        EXPECT_EQ(Direct()->DoesKeyExist(hive, nullptr, &flag), S_OK);
        EXPECT_EQ(flag, VARIANT_FALSE);
        EXPECT_EQ(Direct()->GetValueType(hive, nullptr, nullptr, &type), S_OK);
        EXPECT_EQ(type, 0);
        EXPECT_EQ(Direct()->GetValue(hive, nullptr, nullptr, value.Put()), S_OK);
        EXPECT_EQ(value.Type(), VT_EMPTY);
        EXPECT_EQ(Direct()->GetSubKeyNames(hive, nullptr, value.Put()), S_OK);
        EXPECT_EQ(ReadArray(value.Get())->size(), 0u);
        EXPECT_EQ(Direct()->CreateKey(hive, nullptr, &flag), S_OK);
        EXPECT_EQ(flag, VARIANT_FALSE);
    }
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(Direct()->DoesKeyExist(kUser, nullptr, &exists), S_OK); // null is the empty path
    EXPECT_EQ(exists, VARIANT_TRUE);
}

TEST_F(Registry2Test, ChangesNothingWithoutAPlaceForTheResult) {
    IRegistry2* registry = Direct();
    UniqueBstr path = MakeBstr(kRoot);
    UniqueBstr name = MakeBstr(L"written");
    EXPECT_EQ(
        registry->SetValue(kUser, path.Get(), name.Get(), Variant::FromLong(1).Get(), nullptr),
        E_POINTER);
    EXPECT_EQ(registry->DeleteKey(kUser, path.Get(), nullptr), E_POINTER);
    EXPECT_EQ(Get(L"written").value.Type(), VT_EMPTY);
    EXPECT_EQ(Ask(L"DoesKeyExist", kRoot).Number(), -1);
}

TEST_F(Registry2Test, HugeTextsAreOrdinary) {
    const std::wstring huge(300'000, L'h');
    EXPECT_EQ(Set(L"huge", huge), -1);
    EXPECT_EQ(Get(L"huge").Text(), huge);
    EXPECT_EQ(Ask(L"DoesKeyExist", huge).Number(), 0);
    EXPECT_EQ(Ask(L"CreateKey", kRoot + L"\\" + huge).Number(), 0);
    EXPECT_EQ(Ask(L"DeleteKey", huge).Number(), 0);
    EXPECT_EQ(Ask(L"GetMatchingSubKeys", kRoot, huge, huge).Texts(), Texts());
}

size_t UsedMemory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PagefileUsage;
}

TEST_F(Registry2Test, ManyRoundsLeaveNothingBehind) {
    const std::wstring text(100, L't');
    const Texts list = {text, text};
    auto rounds = [&](int count) {
        for (int i = 0; i < count; ++i) {
            object = TestComponent::Get().Create(__uuidof(::Registry2));
            // Writing is far slower than reading.
            if (i % 10 == 0) {
                Set(L"text", text);
                Set(L"texts", MakeTextArray(list)->Get());
                EXPECT_EQ(Ask(L"GetValueNames", kRoot).Texts().size(), 2u);
                EXPECT_TRUE(Ask(L"GetMatchingSubKeys", kRoot, L"text", text).Texts().empty());
            }
            EXPECT_EQ(Get(L"text").Text(), text);
            EXPECT_EQ(Get(L"texts").Texts(), list);
        }
    };
    rounds(500);
    const size_t handles = OpenHandleCount();
    const size_t memory = UsedMemory();
    ASSERT_GT(handles, 0u);
    ASSERT_GT(memory, 0u);
    rounds(10'000);
    EXPECT_EQ(OpenHandleCount(), handles);
    // A text lost in every tenth round would be as much.
    EXPECT_LT(UsedMemory(), memory + 200'000);
}

} // namespace
} // namespace tervane::test
