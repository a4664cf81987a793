#include "platform/ComValues.h"

#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <functional>

namespace tervane {
namespace {

// An array object as script engines make them: "length" and "0", "1", ... are its members.
class ScriptArray : public test::RecordingSink {
public:
    ScriptArray(Variant length, std::function<std::optional<Variant>(long)> element)
        : length_(std::move(length)), element_(std::move(element)) {}

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                            DISPID* id) override {
        *id = std::wstring(names[0]) == L"length" ? -100 : _wtoi(names[0]);
        return *id == -100 || element_(*id) ? S_OK : DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        ++reads;
        *result = (id == -100 ? *Variant::CopyOf(length_.Get()) : *element_(id)).Release();
        return S_OK;
    }
    VARIANT AsVariant() {
        VARIANT value;
        value.vt = VT_DISPATCH;
        value.pdispVal = this;
        return value;
    }

    int reads = 0;

private:
    Variant length_;
    std::function<std::optional<Variant>(long)> element_;
};

TEST(Automation, TextsTravelThroughBstr) {
    const std::wstring zero(L"a\0b", 3);
    EXPECT_EQ(TextOf(MakeBstr(zero).Get()), zero);
    EXPECT_EQ(TextOf(nullptr), L"");
    EXPECT_NE(MakeBstr(L"").Get(), nullptr);
    EXPECT_EQ(ReturnText(L"x", nullptr), E_POINTER);
}

// Made ones, with their bounds, and ones with any lower bound, by value and by reference.
TEST(Automation, MakesAndReadsArrays) {
    for (const auto& [texts, said] : {std::pair(std::vector<std::wstring>{}, L"[]"),
                                      {{L"one"}, L"[one]"},
                                      {{L"a", L"", L"c"}, L"[a, , c]"}}) {
        std::optional<Variant> made = MakeTextArray(texts);
        ASSERT_TRUE(made);
        EXPECT_EQ(made->Type(), VT_ARRAY | VT_VARIANT);
        VARIANT inner = made->Get();
        EXPECT_EQ(inner.parray->rgsabound[0].lLbound, 0);
        EXPECT_EQ(inner.parray->rgsabound[0].cElements, texts.size());
        inner.parray->rgsabound[0].lLbound = -5;
        VARIANT byReference;
        byReference.vt = VT_BYREF | VT_VARIANT;
        byReference.pvarVal = &inner;
        VARIANT array;
        array.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
        array.pparray = &inner.parray;
        for (const VARIANT& value : {inner, byReference, array}) {
            EXPECT_TRUE(IsArray(value));
            EXPECT_EQ(test::Say(value), said);
        }
    }
}

TEST(Automation, RefusesOtherArrays) {
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    const Variant matrix =
        Variant::FromArray(UniqueSafeArray(SafeArrayCreate(VT_VARIANT, 2, bounds)));
    EXPECT_FALSE(ReadArray(matrix.Get()));
    // Labelled as an array of variants, which it is not.
    const Variant numbers = Variant::FromArray(UniqueSafeArray(SafeArrayCreateVector(VT_I4, 0, 9)));
    EXPECT_FALSE(ReadArray(numbers.Get()));
    EXPECT_FALSE(ReadArray(Variant::FromLong(1).Get()));
    EXPECT_FALSE(ReadArray(Variant().Get()));
    EXPECT_FALSE(IsArray(Variant::FromText(L"length")->Get()));
}

TEST(Automation, ReadsScriptArrays) {
    ScriptArray array(Variant::FromLong(3), [](long i) {
        return i < 3 ? Variant::FromText(std::to_wstring(i * i)) : std::nullopt;
    });
    EXPECT_TRUE(IsArray(array.AsVariant()));
    EXPECT_EQ(test::Say(MakeArray(*ReadArray(array.AsVariant()))->Get()), L"[0, 1, 4]");
    EXPECT_EQ(array.References(), 0);
}

TEST(Automation, DoesNotBelieveEveryScriptArray) {
    auto nothing = [](long) -> std::optional<Variant> { return std::nullopt; };
    auto numbers = [](long i) { return std::optional(Variant::FromLong(i)); };
    ScriptArray sparse(Variant::FromLong(900'000), nothing);
    EXPECT_FALSE(ReadArray(sparse.AsVariant()));
    EXPECT_EQ(sparse.reads, 1);
    ScriptArray endless(Variant::FromUnsigned(0xFFFFFFFF), numbers);
    EXPECT_FALSE(ReadArray(endless.AsVariant()));
    EXPECT_EQ(endless.reads, 1);
    ScriptArray negative(Variant::FromLong(-1), numbers);
    EXPECT_FALSE(ReadArray(negative.AsVariant()));
    ScriptArray unclear(std::move(*Variant::FromText(L"many")), numbers);
    EXPECT_FALSE(ReadArray(unclear.AsVariant()));
    VARIANT null;
    null.vt = VT_DISPATCH;
    null.pdispVal = nullptr;
    EXPECT_FALSE(IsArray(null));
    EXPECT_FALSE(ReadArray(null));
}

TEST(Automation, OwnersCountReferencesOnce) {
    ScriptArray object(Variant::FromLong(0), [](long) { return std::optional<Variant>(); });
    {
        ComPtr<IDispatch> one = AddReference<IDispatch>(&object);
        ComPtr<IUnknown> two = QueryFor<IUnknown>(one.Get());
        EXPECT_EQ(object.References(), 2);
        EXPECT_FALSE(QueryFor<IPersist>(one.Get()));
        Variant held = Variant::FromObject(std::move(one));
        Variant copy = std::move(*Variant::CopyOf(held.Get()));
        EXPECT_EQ(object.References(), 3);
        held = std::move(copy);
        EXPECT_EQ(object.References(), 2);
    }
    EXPECT_EQ(object.References(), 0);
}

} // namespace
} // namespace tervane
