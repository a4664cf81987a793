#include "objects/config/registry/Registry2.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "platform/ComValues.h"
#include "platform/registry/RegistryKey.h"
#include "platform/text/RegularExpression.h"

#include <optional>
#include <string>
#include <vector>

namespace tervane {
namespace {

// What scripts know of a value's type.
enum TypeCode : long { kNone = 0, kNumber = 1, kText = 2, kTexts = 3, kBinary = 4 };

TypeCode TypeCodeOf(std::optional<DWORD> type) noexcept {
    switch (type.value_or(REG_NONE)) {
    case REG_DWORD:
        return kNumber;
    case REG_SZ:
    case REG_EXPAND_SZ:
        return kText;
    case REG_MULTI_SZ:
        return kTexts;
    case REG_BINARY:
        return kBinary;
    default:
        return kNone;
    }
}

// Not open for a number that stands for no hive: it behaves as a missing key.
RegistryKey OpenKey(short hive, BSTR path, REGSAM access) {
    std::optional<RegistryHive> known = RegistryHiveOf(hive);
    return known ? RegistryKey::Open(*known, TextOf(path), access) : RegistryKey();
}

enum class Numbers { kRead, kLeaveEmpty };

// VT_EMPTY for a value that is missing or cannot be read; nullopt when memory is exhausted.
std::optional<Variant> ReadAsVariant(const RegistryKey& key, std::wstring_view name,
                                     Numbers numbers) {
    const std::optional<RegistryValue> value = key.ReadSetting(name);
    if (!value) {
        return Variant();
    }
    if (const auto text = value->Text()) {
        return Variant::FromText(*text);
    }
    if (const auto texts = value->Texts()) {
        return MakeTextArray(*texts);
    }
    // Deliberate: a binary value is delivered as a number too, and one of more than four bytes not
    // at all.
    const auto number = numbers == Numbers::kRead ? value->Number() : std::nullopt;
    return number ? Variant::FromUnsigned(*number) : Variant();
}

// A key may grant the reading of its values alone, and then tells its texts. A number takes the
// right to all reading: deliberate, scripts see an empty value where they always have.
std::optional<Variant> ReadGranted(short hive, BSTR path, std::wstring_view name) {
    const RegistryKey key = OpenKey(hive, path, KEY_READ);
    if (key.IsOpen()) {
        return ReadAsVariant(key, name, Numbers::kRead);
    }
    if (GetLastError() != ERROR_ACCESS_DENIED) {
        return Variant();
    }
    return ReadAsVariant(OpenKey(hive, path, KEY_QUERY_VALUE), name, Numbers::kLeaveEmpty);
}

bool WriteArray(const RegistryKey& key, std::wstring_view name, const VARIANT& array) {
    std::optional<std::vector<Variant>> elements = ReadArray(array);
    if (!elements) {
        return false;
    }
    std::vector<std::wstring> texts;
    texts.reserve(elements->size());
    for (const Variant& element : *elements) {
        if (element.Type() != VT_BSTR) {
            return false;
        }
        texts.emplace_back(element.Text());
    }
    return key.WriteTexts(name, texts);
}

bool WriteVariant(const RegistryKey& key, std::wstring_view name, const VARIANT& value) {
    if (IsArray(value)) {
        return WriteArray(key, name, value);
    }
    std::optional<Variant> plain = Variant::CopyOf(value);
    if (!plain) {
        return false;
    }
    if (plain->Type() == VT_BSTR) {
        return key.WriteText(name, plain->Text());
    }
    std::optional<Variant> number = plain->As(VT_UI4);
    return number && key.WriteNumber(name, number->Get().ulVal);
}

// The subkeys whose text value `name` matches; one without such a value does not.
std::vector<std::wstring> MatchingSubKeys(const RegistryKey& key, std::wstring_view name,
                                          const RegularExpression& pattern) {
    std::vector<std::wstring> matching;
    if (!pattern.IsValid()) {
        return matching;
    }
    for (std::wstring& subKey : key.SubKeyNames()) {
        std::optional<std::wstring> text = key.OpenSubKey(subKey, KEY_QUERY_VALUE).ReadText(name);
        if (text && pattern.Matches(*text)) {
            matching.push_back(std::move(subKey));
        }
    }
    return matching;
}

} // namespace

HRESULT Registry2::DoesKeyExist(short hive, BSTR path, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] { return OpenKey(hive, path, KEY_QUERY_VALUE).IsOpen(); });
}

HRESULT Registry2::DoesValueExist(short hive, BSTR path, BSTR name, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return OpenKey(hive, path, KEY_QUERY_VALUE).TypeOf(TextOf(name)).has_value();
    });
}

HRESULT Registry2::GetSubKeyNames(short hive, BSTR path, VARIANT* result) {
    return AnswerTexts(result,
                       [&] { return OpenKey(hive, path, KEY_ENUMERATE_SUB_KEYS).SubKeyNames(); });
}

HRESULT Registry2::GetValueNames(short hive, BSTR path, VARIANT* result) {
    return AnswerTexts(result, [&] { return OpenKey(hive, path, KEY_QUERY_VALUE).ValueNames(); });
}

HRESULT Registry2::GetValueType(short hive, BSTR path, BSTR name, long* result) {
    return AnswerNumber(result, [&] {
        return TypeCodeOf(OpenKey(hive, path, KEY_QUERY_VALUE).TypeOf(TextOf(name)));
    });
}

HRESULT Registry2::GetValue(short hive, BSTR path, BSTR name, VARIANT* result) {
    // Unlike its siblings, which call a null pointer an error.
    if (result == nullptr) {
        return S_FALSE;
    }
    VariantInit(result);
    return Guarded([&] { return ReturnValue(ReadGranted(hive, path, TextOf(name)), result); });
}

HRESULT Registry2::SetValue(short hive, BSTR path, BSTR name, VARIANT value, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return WriteVariant(OpenKey(hive, path, KEY_SET_VALUE), TextOf(name), value);
    });
}

HRESULT Registry2::DeleteValue(short hive, BSTR path, BSTR name, VARIANT_BOOL* result) {
    return AnswerFlag(result,
                      [&] { return OpenKey(hive, path, KEY_SET_VALUE).DeleteValue(TextOf(name)); });
}

HRESULT Registry2::DeleteKey(short hive, BSTR path, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        std::optional<RegistryHive> known = RegistryHiveOf(hive);
        return known && RegistryKey::Delete(*known, TextOf(path));
    });
}

HRESULT Registry2::CreateKey(short hive, BSTR path, VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        std::optional<RegistryHive> known = RegistryHiveOf(hive);
        return known && RegistryKey::Create(*known, TextOf(path), KEY_QUERY_VALUE).IsOpen();
    });
}

HRESULT Registry2::GetMatchingSubKeys(short hive, BSTR path, BSTR name, BSTR pattern,
                                      VARIANT* result) {
    return AnswerTexts(result, [&] {
        return MatchingSubKeys(OpenKey(hive, path, KEY_ENUMERATE_SUB_KEYS), TextOf(name),
                               RegularExpression::WholeTextMatch(TextOf(pattern)));
    });
}

namespace create {

HRESULT Registry2(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::Registry2>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
