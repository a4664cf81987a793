#pragma once

// Automation values as owned C++ values. COM hands memory across in four shapes - strings, arrays,
// variants and interface pointers; each has one owner here, so that no path of a method can leak or
// free twice, and each conversion between these shapes and the standard library is written once.
//
// Nothing here throws on its own account, but the standard containers may (std::bad_alloc): callers
// sit behind the guard at the COM edge. Exhausted COM memory is told by an empty owner or nullopt.

#include "ZelBase/UniqueResource.h"

#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

struct BstrTraits {
    using Type = BSTR;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type text) noexcept { SysFreeString(text); }
};
using UniqueBstr = ZelBase::UniqueResource<BstrTraits>;

struct SafeArrayTraits {
    using Type = SAFEARRAY*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type array) noexcept { SafeArrayDestroy(array); }
};
using UniqueSafeArray = ZelBase::UniqueResource<SafeArrayTraits>;

template <typename Interface>
struct InterfaceTraits {
    using Type = Interface*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type pointer) noexcept { pointer->Release(); }
};
// Owns one reference. Construction takes over a reference that the caller already holds; use
// `AddReference` to share one.
template <typename Interface>
using ComPtr = ZelBase::UniqueResource<InterfaceTraits<Interface>>;

// A second owner of the same object; null stays null.
template <typename Interface>
ComPtr<Interface> AddReference(Interface* pointer) noexcept {
    if (pointer != nullptr) {
        pointer->AddRef();
    }
    return ComPtr<Interface>(pointer);
}

// The object's other interface; null when it has none or `object` is null.
template <typename Interface>
ComPtr<Interface> QueryFor(IUnknown* object) noexcept {
    ComPtr<Interface> found;
    if (object == nullptr || FAILED(object->QueryInterface(
                                 __uuidof(Interface), reinterpret_cast<void**>(found.Put())))) {
        return {};
    }
    return found;
}

// The characters of a borrowed BSTR, embedded zeros included; a null BSTR is the empty text.
// Valid as long as the BSTR is.
inline std::wstring_view TextOf(BSTR text) noexcept {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, SysStringLen(text));
}

// A copy of `text`; never null except when memory is exhausted.
UniqueBstr MakeBstr(std::wstring_view text) noexcept;

// For an `[out,retval] BSTR*`: a copy of `text` in `*result`.
// E_POINTER for a null pointer, E_OUTOFMEMORY (and a null result) when memory is exhausted.
HRESULT ReturnText(std::wstring_view text, BSTR* result) noexcept;

// An owned VARIANT. Move-only; copies are made by name because they can fail.
class Variant {
public:
    Variant() noexcept { VariantInit(&value_); }
    // Takes over what `value` owns.
    explicit Variant(const VARIANT& value) noexcept : value_(value) {}
    Variant(Variant&& other) noexcept : value_(other.Release()) {}
    Variant& operator=(Variant&& other) noexcept;
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&value_); }

    // VT_BSTR holding a copy of `text`; nullopt when memory is exhausted.
    static std::optional<Variant> FromText(std::wstring_view text) noexcept;
    // VT_I4.
    static Variant FromLong(LONG number) noexcept;
    // VT_UI4.
    static Variant FromUnsigned(ULONG number) noexcept;
    // VT_BOOL, -1 or 0.
    static Variant FromBool(bool truth) noexcept;
    // VT_DISPATCH; takes over the reference.
    static Variant FromObject(ComPtr<IDispatch> object) noexcept;
    // VT_ARRAY | VT_VARIANT; takes over the array.
    static Variant FromArray(UniqueSafeArray array) noexcept;
    // A copy of `source` by value: VBScript passes its variables by reference, and what a method
    // keeps must not point into the script. nullopt when `source` cannot be copied.
    static std::optional<Variant> CopyOf(const VARIANT& source) noexcept;

    VARTYPE Type() const noexcept { return value_.vt; }
    const VARIANT& Get() const noexcept { return value_; }
    // The characters of a VT_BSTR; empty for every other type. Valid as long as this is unchanged.
    std::wstring_view Text() const noexcept;
    // The value as another type by the automation's rules, numbers and texts read in the user's
    // locale; nullopt when it cannot be converted.
    std::optional<Variant> As(VARTYPE type) const noexcept;
    // Clears and returns the place for a function that hands out a value.
    VARIANT* Put() noexcept;
    // Gives the value up to the caller, who must clear it; VT_EMPTY remains.
    VARIANT Release() noexcept;

private:
    VARIANT value_;
};

// A one-dimensional SAFEARRAY of VARIANT with lower bound 0, made of the values in their order;
// none at all make an array without elements. nullopt when memory is exhausted.
std::optional<Variant> MakeArray(std::vector<Variant> elements) noexcept;
// The same of strings.
std::optional<Variant> MakeTextArray(std::span<const std::wstring> texts);

// For an `[out,retval] VARIANT*`: the value in `*result`. E_POINTER for a null pointer;
// E_OUTOFMEMORY (and VT_EMPTY) for a value that could not be made.
HRESULT ReturnValue(std::optional<Variant> value, VARIANT* result) noexcept;

// Whether a script means `value` as an array: VT_ARRAY | VT_VARIANT, or an object with a "length"
// property as the arrays of JScript are. A value by reference is followed.
bool IsArray(const VARIANT& value) noexcept;

// The elements of what `IsArray` calls an array, each by value, from the lower to the upper bound.
// nullopt when it is none, has another number of dimensions than one, or cannot be read: a script
// array with a hole, with a length that is no number, or longer than `kLongestScriptArray`.
// The objects of scripts are called back; the thread must be the one that owns them.
std::optional<std::vector<Variant>> ReadArray(const VARIANT& value);

// An object can claim any length; beyond this one it is not believed.
inline constexpr ULONG kLongestScriptArray = 1'000'000;

} // namespace tervane
