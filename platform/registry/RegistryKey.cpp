#include "platform/registry/RegistryKey.h"

#include "platform/text/NarrowText.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tervane {

const RegistryApi& RegistryApi::System() noexcept {
    static const RegistryApi system = {
        .openKeyWide = RegOpenKeyExW,
        .openKeyNarrow = RegOpenKeyExA,
        .createKeyWide = RegCreateKeyExW,
        .createKeyNarrow = RegCreateKeyExA,
        .deleteKeyWide = RegDeleteKeyW,
        .deleteKeyNarrow = RegDeleteKeyA,
        .enumKeyWide = RegEnumKeyExW,
        .enumKeyNarrow = RegEnumKeyExA,
        .enumValueWide = RegEnumValueW,
        .enumValueNarrow = RegEnumValueA,
        .queryValueWide = RegQueryValueExW,
        .queryValueNarrow = RegQueryValueExA,
        .setValueWide = RegSetValueExW,
        .setValueNarrow = RegSetValueExA,
        .deleteValueWide = RegDeleteValueW,
        .deleteValueNarrow = RegDeleteValueA,
    };
    return system;
}

namespace {

// Names are at most 255 characters for keys and 16383 for values; other registries may differ.
constexpr std::size_t kUsualName = 256;
constexpr std::size_t kLongestName = 65'536;
// In bytes. What is longer takes one more question.
constexpr std::size_t kUsualValue = 512;
// A value that grows while it is read is read again.
constexpr int kReadAttempts = 8;

HKEY HandleOf(RegistryHive hive) noexcept {
    switch (hive) {
    case RegistryHive::kClassesRoot:
        return HKEY_CLASSES_ROOT;
    case RegistryHive::kCurrentUser:
        return HKEY_CURRENT_USER;
    case RegistryHive::kLocalMachine:
        return HKEY_LOCAL_MACHINE;
    case RegistryHive::kUsers:
        return HKEY_USERS;
    case RegistryHive::kCurrentConfig:
        return HKEY_CURRENT_CONFIG;
    case RegistryHive::kDynamicData:
        return HKEY_DYN_DATA;
    }
    return nullptr;
}

// A path or name in both forms, for functions that end it at the first zero character.
class Name {
public:
    explicit Name(std::wstring_view text)
        : isUsable_(text.find(L'\0') == std::wstring_view::npos), wide_(text) {}

    // Calls `wide` with the name; when that fails, `narrow`. Both return a Windows error code, and
    // so does this, which also makes a failure the thread's last error. A name that cannot exist is
    // not found.
    template <typename Wide, typename Narrow>
    LSTATUS Try(Wide wide, Narrow narrow) const {
        const LSTATUS status = TryBoth(wide, narrow);
        if (status != ERROR_SUCCESS) {
            SetLastError(static_cast<DWORD>(status));
        }
        return status;
    }

private:
    template <typename Wide, typename Narrow>
    LSTATUS TryBoth(Wide wide, Narrow narrow) const {
        if (!isUsable_) {
            return ERROR_FILE_NOT_FOUND;
        }
        const LSTATUS status = wide(wide_.c_str());
        if (status == ERROR_SUCCESS) {
            return status;
        }
        std::optional<std::string> inCodePage = ToNarrow(wide_);
        return inCodePage ? narrow(inCodePage->c_str()) : status;
    }

    bool isUsable_;
    std::wstring wide_;
};

UniqueRegistryKey OpenHandle(HKEY parent, std::wstring_view path, REGSAM access,
                             const RegistryApi& api) {
    UniqueRegistryKey key;
    Name(path).Try(
        [&](const wchar_t* wide) { return api.openKeyWide(parent, wide, 0, access, key.Put()); },
        [&](const char* narrow) {
            return api.openKeyNarrow(parent, narrow, 0, access, key.Put());
        });
    return key;
}

// Reads the names of an enumeration by their index. `Wide` and `Narrow` are the two forms of
// RegEnumKeyEx or RegEnumValue.
template <typename Wide, typename Narrow>
class NameReader {
public:
    NameReader(HKEY key, Wide wide, Narrow narrow) : key_(key), wide_(wide), narrow_(narrow) {}

    // nullopt after the last one.
    std::optional<std::wstring> Read(DWORD index) {
        DWORD length = 0;
        LSTATUS status = Fill(wide_, index, wideBuffer_, length);
        if (status == ERROR_SUCCESS) {
            return wideBuffer_.substr(0, length);
        }
        // On a system that knows the wide form, the end is the end.
        if (status != ERROR_NO_MORE_ITEMS) {
            status = Fill(narrow_, index, narrowBuffer_, length);
        }
        return status == ERROR_SUCCESS ? std::optional(FromNarrow(narrowBuffer_.substr(0, length)))
                                       : std::nullopt;
    }
    std::vector<std::wstring> ReadAll() {
        std::vector<std::wstring> names;
        while (std::optional<std::wstring> name = Read(static_cast<DWORD>(names.size()))) {
            names.push_back(std::move(*name));
        }
        return names;
    }

private:
    // The buffer grows to the longest name and is kept for the next one.
    template <typename Function, typename Buffer>
    LSTATUS Fill(Function function, DWORD index, Buffer& buffer, DWORD& length) {
        for (;;) {
            length = static_cast<DWORD>(buffer.size());
            const LSTATUS status =
                function(key_, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
            if (status != ERROR_MORE_DATA || buffer.size() >= kLongestName) {
                return status;
            }
            buffer.resize(buffer.size() * 2);
        }
    }

    HKEY key_;
    Wide wide_;
    Narrow narrow_;
    std::wstring wideBuffer_ = std::wstring(kUsualName, L'\0');
    std::string narrowBuffer_ = std::string(kUsualName, '\0');
};

bool IsText(DWORD type) noexcept {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Turns what a narrow function returned into what the wide one would have.
void Widen(RegistryValue& value) {
    if (!IsText(value.type)) {
        return;
    }
    value.bytes = EncodeRegistryCharacters(
        FromNarrow({reinterpret_cast<const char*>(value.bytes.data()), value.bytes.size()}));
}

// Reads type and data by one question in most cases. Of a value that is longer than usual the
// answer gives type and size, and it is read in a second one, if its type is `wanted`. `query` is
// RegQueryValueEx from its type parameter on.
template <typename Query>
LSTATUS ReadValue(RegistryValue& value, bool (*wanted)(DWORD type), Query query) {
    unsigned char usual[kUsualValue];
    DWORD size = sizeof usual;
    LSTATUS status = query(&value.type, usual, &size);
    if (status == ERROR_SUCCESS) {
        value.bytes.assign(usual, usual + std::min<std::size_t>(size, sizeof usual));
    }
    for (int i = 0; i < kReadAttempts && status == ERROR_MORE_DATA && wanted(value.type); ++i) {
        value.bytes.resize(size);
        status = query(&value.type, value.bytes.data(), &size);
        value.bytes.resize(std::min<std::size_t>(size, value.bytes.size()));
    }
    return status;
}

// The narrow form of what is to be written; nullopt when the code page lacks a character of it.
std::optional<RegistryBytes> NarrowBytes(const RegistryValue& value) {
    if (!IsText(value.type)) {
        return value.bytes;
    }
    std::optional<std::string> text = ToNarrow(DecodeRegistryCharacters(value.bytes));
    if (!text) {
        return std::nullopt;
    }
    return RegistryBytes(text->begin(), text->end());
}

bool HasZero(std::wstring_view text) noexcept {
    return text.find(L'\0') != std::wstring_view::npos;
}

} // namespace

std::optional<RegistryHive> RegistryHiveOf(short number) noexcept {
    if (number < 0 || number > static_cast<short>(RegistryHive::kCurrentConfig)) {
        return std::nullopt;
    }
    return static_cast<RegistryHive>(number);
}

std::optional<std::wstring> RegistryValue::Text() const {
    return type == REG_SZ || type == REG_EXPAND_SZ ? std::optional(DecodeRegistryText(bytes))
                                                   : std::nullopt;
}

std::optional<std::vector<std::wstring>> RegistryValue::Texts() const {
    return type == REG_MULTI_SZ ? std::optional(DecodeRegistryTexts(bytes)) : std::nullopt;
}

std::optional<DWORD> RegistryValue::Number() const {
    DWORD number = 0;
    if ((type != REG_DWORD && type != REG_BINARY) || bytes.size() > sizeof number) {
        return std::nullopt;
    }
    std::ranges::copy(bytes, reinterpret_cast<unsigned char*>(&number));
    return number;
}

RegistryKey RegistryKey::Open(RegistryHive hive, std::wstring_view path, REGSAM access,
                              const RegistryApi& api) {
    return RegistryKey(OpenHandle(HandleOf(hive), path, access, api), api);
}

RegistryKey RegistryKey::Create(RegistryHive hive, std::wstring_view path, REGSAM access,
                                const RegistryApi& api) {
    UniqueRegistryKey key;
    Name(path).Try(
        [&](const wchar_t* wide) {
            return api.createKeyWide(HandleOf(hive), wide, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                     access, nullptr, key.Put(), nullptr);
        },
        [&](const char* narrow) {
            return api.createKeyNarrow(HandleOf(hive), narrow, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                       access, nullptr, key.Put(), nullptr);
        });
    return RegistryKey(std::move(key), api);
}

bool RegistryKey::Delete(RegistryHive hive, std::wstring_view path, const RegistryApi& api) {
    const bool namesHive = path.find_first_not_of(L'\\') == std::wstring_view::npos;
    // The 9x family would delete the subkeys along with the key.
    if (namesHive || Open(hive, path, KEY_READ, api).HasSubKeys()) {
        return false;
    }
    const LSTATUS status = Name(path).Try(
        [&](const wchar_t* wide) { return api.deleteKeyWide(HandleOf(hive), wide); },
        [&](const char* narrow) { return api.deleteKeyNarrow(HandleOf(hive), narrow); });
    return status == ERROR_SUCCESS;
}

RegistryKey RegistryKey::OpenSubKey(std::wstring_view path, REGSAM access) const {
    return IsOpen() ? RegistryKey(OpenHandle(key_.Get(), path, access, *api_), *api_)
                    : RegistryKey();
}

bool RegistryKey::HasSubKeys() const {
    return NameReader(key_.Get(), api_->enumKeyWide, api_->enumKeyNarrow).Read(0).has_value();
}

std::vector<std::wstring> RegistryKey::SubKeyNames() const {
    return NameReader(key_.Get(), api_->enumKeyWide, api_->enumKeyNarrow).ReadAll();
}

std::vector<std::wstring> RegistryKey::ValueNames() const {
    return NameReader(key_.Get(), api_->enumValueWide, api_->enumValueNarrow).ReadAll();
}

std::optional<DWORD> RegistryKey::TypeOf(std::wstring_view name) const {
    DWORD type = REG_NONE;
    const LSTATUS status = Name(name).Try(
        [&](const wchar_t* wide) {
            return api_->queryValueWide(key_.Get(), wide, nullptr, &type, nullptr, nullptr);
        },
        [&](const char* narrow) {
            return api_->queryValueNarrow(key_.Get(), narrow, nullptr, &type, nullptr, nullptr);
        });
    return status == ERROR_SUCCESS ? std::optional(type) : std::nullopt;
}

std::optional<RegistryValue> RegistryKey::Query(std::wstring_view name, LongValues wanted) const {
    const auto isWanted = wanted == LongValues::kReadTexts ? IsText : [](DWORD) { return true; };
    RegistryValue value;
    const LSTATUS status = Name(name).Try(
        [&](const wchar_t* wide) {
            return ReadValue(value, isWanted, [&](DWORD* type, BYTE* data, DWORD* size) {
                return api_->queryValueWide(key_.Get(), wide, nullptr, type, data, size);
            });
        },
        [&](const char* narrow) {
            const LSTATUS read =
                ReadValue(value, isWanted, [&](DWORD* type, BYTE* data, DWORD* size) {
                    return api_->queryValueNarrow(key_.Get(), narrow, nullptr, type, data, size);
                });
            Widen(value);
            return read;
        });
    return status == ERROR_SUCCESS ? std::optional(std::move(value)) : std::nullopt;
}

std::optional<RegistryValue> RegistryKey::Read(std::wstring_view name) const {
    return Query(name, LongValues::kRead);
}

std::optional<RegistryValue> RegistryKey::ReadSetting(std::wstring_view name) const {
    return Query(name, LongValues::kReadTexts);
}

std::optional<std::wstring> RegistryKey::ReadText(std::wstring_view name) const {
    const std::optional<RegistryValue> value = ReadSetting(name);
    return value ? value->Text() : std::nullopt;
}

std::optional<std::vector<std::wstring>> RegistryKey::ReadTexts(std::wstring_view name) const {
    const std::optional<RegistryValue> value = ReadSetting(name);
    return value ? value->Texts() : std::nullopt;
}

std::optional<DWORD> RegistryKey::ReadNumber(std::wstring_view name) const {
    const std::optional<RegistryValue> value = ReadSetting(name);
    return value ? value->Number() : std::nullopt;
}

bool RegistryKey::WriteText(std::wstring_view name, std::wstring_view text) const {
    return !HasZero(text) && Write(name, {REG_SZ, EncodeRegistryText(text)});
}

bool RegistryKey::WriteExpandableText(std::wstring_view name, std::wstring_view text) const {
    return !HasZero(text) && Write(name, {REG_EXPAND_SZ, EncodeRegistryText(text)});
}

bool RegistryKey::WriteTexts(std::wstring_view name, std::span<const std::wstring> texts) const {
    auto cannotBeStored = [](const std::wstring& text) { return text.empty() || HasZero(text); };
    return std::none_of(texts.begin(), texts.end(), cannotBeStored) &&
           Write(name, {REG_MULTI_SZ, EncodeRegistryTexts(texts)});
}

bool RegistryKey::WriteNumber(std::wstring_view name, DWORD number) const {
    const auto* first = reinterpret_cast<const unsigned char*>(&number);
    return Write(name, {REG_DWORD, RegistryBytes(first, first + sizeof(number))});
}

bool RegistryKey::WriteBytes(std::wstring_view name, std::span<const unsigned char> bytes) const {
    return Write(name, {REG_BINARY, RegistryBytes(bytes.begin(), bytes.end())});
}

bool RegistryKey::DeleteValue(std::wstring_view name) const {
    const LSTATUS status = Name(name).Try(
        [&](const wchar_t* wide) { return api_->deleteValueWide(key_.Get(), wide); },
        [&](const char* narrow) { return api_->deleteValueNarrow(key_.Get(), narrow); });
    return status == ERROR_SUCCESS;
}

bool RegistryKey::Write(std::wstring_view name, const RegistryValue& value) const {
    if (value.bytes.size() > std::numeric_limits<DWORD>::max()) {
        return false;
    }
    const LSTATUS status = Name(name).Try(
        [&](const wchar_t* wide) {
            return api_->setValueWide(key_.Get(), wide, 0, value.type, value.bytes.data(),
                                      static_cast<DWORD>(value.bytes.size()));
        },
        [&](const char* narrow) {
            std::optional<RegistryBytes> bytes = NarrowBytes(value);
            return bytes ? api_->setValueNarrow(key_.Get(), narrow, 0, value.type, bytes->data(),
                                                static_cast<DWORD>(bytes->size()))
                         : static_cast<LSTATUS>(ERROR_NO_UNICODE_TRANSLATION);
        });
    return status == ERROR_SUCCESS;
}

} // namespace tervane
