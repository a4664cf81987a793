#include "platform/ComValues.h"

#include "platform/text/LetterCase.h"

#include <limits>
#include <utility>

namespace tervane {
namespace {

constexpr VARTYPE kArrayOfVariants = VT_ARRAY | VT_VARIANT;

std::optional<DISPID> FindMember(IDispatch& object, const wchar_t* name) noexcept {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) {
        return std::nullopt;
    }
    return id;
}

std::optional<Variant> ReadMember(IDispatch& object, const wchar_t* name) noexcept {
    std::optional<DISPID> id = FindMember(object, name);
    if (!id) {
        return std::nullopt;
    }
    DISPPARAMS none{};
    Variant read;
    if (FAILED(object.Invoke(*id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                             read.Put(), nullptr, nullptr))) {
        return std::nullopt;
    }
    return Variant::CopyOf(read.Get());
}

// What a variant, by value or by reference, offers as an array. Both pointers are borrowed.
struct ArraySource {
    SAFEARRAY* array = nullptr;
    IDispatch* object = nullptr;
};

ArraySource LookBehindReferences(const VARIANT& value) noexcept {
    const bool isReference = value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal != nullptr;
    const VARIANT& plain = isReference ? *value.pvarVal : value;
    switch (plain.vt) {
    case kArrayOfVariants:
        return {.array = plain.parray};
    case VT_BYREF | kArrayOfVariants:
        return {.array = plain.pparray ? *plain.pparray : nullptr};
    case VT_DISPATCH:
        return {.object = plain.pdispVal};
    case VT_BYREF | VT_DISPATCH:
        return {.object = plain.ppdispVal ? *plain.ppdispVal : nullptr};
    default:
        return {};
    }
}

// Lends out the elements of an array in place for as long as it lives.
class LockedElements {
public:
    explicit LockedElements(SAFEARRAY* array) noexcept : array_(array) {
        isLocked_ = SUCCEEDED(SafeArrayAccessData(array_, reinterpret_cast<void**>(&elements_)));
    }
    LockedElements(const LockedElements&) = delete;
    LockedElements& operator=(const LockedElements&) = delete;
    ~LockedElements() {
        if (isLocked_) {
            SafeArrayUnaccessData(array_);
        }
    }
    explicit operator bool() const noexcept { return isLocked_; }
    VARIANT& operator[](std::size_t index) const noexcept { return elements_[index]; }

private:
    SAFEARRAY* array_;
    VARIANT* elements_ = nullptr;
    bool isLocked_ = false;
};

std::optional<std::vector<Variant>> ReadSafeArray(SAFEARRAY* array) {
    // The label of a variant is its maker's claim; the array knows what it holds.
    if (SafeArrayGetDim(array) != 1 || (array->fFeatures & FADF_VARIANT) == 0) {
        return std::nullopt;
    }
    LockedElements source(array);
    if (!source) {
        return std::nullopt;
    }
    const ULONG count = array->rgsabound[0].cElements;
    std::vector<Variant> elements;
    elements.reserve(count);
    for (ULONG i = 0; i < count; ++i) {
        std::optional<Variant> element = Variant::CopyOf(source[i]);
        if (!element) {
            return std::nullopt;
        }
        elements.push_back(std::move(*element));
    }
    return elements;
}

std::optional<std::vector<Variant>> ReadScriptArray(IDispatch& object) {
    std::optional<Variant> length = ReadMember(object, L"length");
    if (length) {
        length = length->As(VT_UI4);
    }
    if (!length || length->Get().ulVal > kLongestScriptArray) {
        return std::nullopt;
    }
    std::vector<Variant> elements;
    // Nothing is reserved: the length is the object's claim, the elements are what counts.
    for (ULONG i = 0; i < length->Get().ulVal; ++i) {
        std::optional<Variant> element = ReadMember(object, DecimalText(i).c_str());
        if (!element) {
            return std::nullopt;
        }
        elements.push_back(std::move(*element));
    }
    return elements;
}

} // namespace

UniqueBstr MakeBstr(std::wstring_view text) noexcept {
    // The length is kept in bytes as a 32-bit number.
    if (text.size() > std::numeric_limits<UINT>::max() / sizeof(wchar_t) - 2) {
        return {};
    }
    return UniqueBstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

HRESULT ReturnText(std::wstring_view text, BSTR* result) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = MakeBstr(text).Release();
    return *result == nullptr ? E_OUTOFMEMORY : S_OK;
}

Variant& Variant::operator=(Variant&& other) noexcept {
    if (this != &other) {
        VariantClear(&value_);
        value_ = other.Release();
    }
    return *this;
}

std::optional<Variant> Variant::FromText(std::wstring_view text) noexcept {
    UniqueBstr copy = MakeBstr(text);
    if (!copy) {
        return std::nullopt;
    }
    Variant made;
    made.value_.vt = VT_BSTR;
    made.value_.bstrVal = copy.Release();
    return made;
}

Variant Variant::FromLong(LONG number) noexcept {
    Variant made;
    made.value_.vt = VT_I4;
    made.value_.lVal = number;
    return made;
}

Variant Variant::FromUnsigned(ULONG number) noexcept {
    Variant made;
    made.value_.vt = VT_UI4;
    made.value_.ulVal = number;
    return made;
}

Variant Variant::FromBool(bool truth) noexcept {
    Variant made;
    made.value_.vt = VT_BOOL;
    made.value_.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    return made;
}

Variant Variant::FromObject(ComPtr<IDispatch> object) noexcept {
    Variant made;
    made.value_.vt = VT_DISPATCH;
    made.value_.pdispVal = object.Release();
    return made;
}

Variant Variant::FromArray(UniqueSafeArray array) noexcept {
    Variant made;
    made.value_.vt = kArrayOfVariants;
    made.value_.parray = array.Release();
    return made;
}

std::optional<Variant> Variant::CopyOf(const VARIANT& source) noexcept {
    Variant copy;
    if (FAILED(VariantCopyInd(&copy.value_, const_cast<VARIANT*>(&source)))) {
        return std::nullopt;
    }
    return copy;
}

std::wstring_view Variant::Text() const noexcept {
    return value_.vt == VT_BSTR ? TextOf(value_.bstrVal) : std::wstring_view();
}

std::optional<Variant> Variant::As(VARTYPE type) const noexcept {
    Variant converted;
    if (FAILED(VariantChangeType(&converted.value_, const_cast<VARIANT*>(&value_), 0, type))) {
        return std::nullopt;
    }
    return converted;
}

VARIANT* Variant::Put() noexcept {
    VariantClear(&value_);
    return &value_;
}

VARIANT Variant::Release() noexcept {
    VARIANT released = value_;
    VariantInit(&value_);
    return released;
}

std::optional<Variant> MakeArray(std::vector<Variant> elements) noexcept {
    if (elements.size() > std::numeric_limits<ULONG>::max()) {
        return std::nullopt;
    }
    UniqueSafeArray array(
        SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size())));
    if (!array) {
        return std::nullopt;
    }
    {
        LockedElements places(array.Get());
        if (!places) {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < elements.size(); ++i) {
            places[i] = elements[i].Release();
        }
    }
    return Variant::FromArray(std::move(array));
}

std::optional<Variant> MakeTextArray(std::span<const std::wstring> texts) {
    std::vector<Variant> elements;
    elements.reserve(texts.size());
    for (const std::wstring& text : texts) {
        std::optional<Variant> element = Variant::FromText(text);
        if (!element) {
            return std::nullopt;
        }
        elements.push_back(std::move(*element));
    }
    return MakeArray(std::move(elements));
}

HRESULT ReturnValue(std::optional<Variant> value, VARIANT* result) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    VariantInit(result);
    if (!value) {
        return E_OUTOFMEMORY;
    }
    *result = value->Release();
    return S_OK;
}

bool IsArray(const VARIANT& value) noexcept {
    ArraySource source = LookBehindReferences(value);
    ComPtr<IDispatch> object = AddReference(source.object);
    return source.array != nullptr || (object && FindMember(*object.Get(), L"length"));
}

std::optional<std::vector<Variant>> ReadArray(const VARIANT& value) {
    ArraySource source = LookBehindReferences(value);
    if (source.array != nullptr) {
        return ReadSafeArray(source.array);
    }
    // The script may drop its own reference while it is called back.
    ComPtr<IDispatch> object = AddReference(source.object);
    return object ? ReadScriptArray(*object.Get()) : std::nullopt;
}

} // namespace tervane
