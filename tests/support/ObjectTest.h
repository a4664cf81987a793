#pragma once

// What tests of one object share: the object, what it reports, and whole conversations with it as
// tables of calls and answers.

#include "support/TestComponent.h"

#include <gtest/gtest.h>

namespace tervane::test {

inline constexpr DWORD kPatience = 60000; // ms, for whatever must come: a mail step that a busy
                                          // machine has dropped takes 30 s to end

// One call and its answer in the words of `Say`. A name that ends in "=" puts a property.
struct Exchange {
    std::wstring member;
    std::vector<Argument> arguments = {};
    std::wstring answer = L"empty";
};

inline void ExpectAnswers(IDispatch* object, const std::vector<Exchange>& exchanges) {
    for (const Exchange& exchange : exchanges) {
        EXPECT_EQ(exchange.answer, Ask(object, exchange.member, exchange.arguments))
            << testing::PrintToString(exchange.member);
    }
}

inline bool CanUnloadSoon() {
    return PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience);
}

// After each test nothing of its object may be left.
class ObjectTest : public testing::Test {
protected:
    explicit ObjectTest(const wchar_t* name) : ObjectTest(New(name)) {}
    explicit ObjectTest(const ComPtr<IDispatch>& object) : object_(AddReference(object.Get())) {
        Advise(object_.Get(), &sink_);
    }
    ~ObjectTest() override {
        sink_.Forget();
        object_.Reset();
        EXPECT_TRUE(CanUnloadSoon());
        EXPECT_TRUE(PumpUntil([this] { return sink_.References() == 0; }, kPatience));
    }

    std::wstring Ask(const std::wstring& member, const std::vector<Argument>& arguments = {}) {
        return test::Ask(object_.Get(), member, arguments);
    }
    void Answers(const std::vector<Exchange>& exchanges) {
        ExpectAnswers(object_.Get(), exchanges);
    }
    // The next event, in the words of `RecordingSink::Text`; "none" when it does not come.
    std::wstring Event() {
        return sink_.WaitFor(seen_ + 1, kPatience) ? sink_.Text(seen_++) : L"none";
    }

    const Apartment apartment_;
    RecordingSink sink_;
    ComPtr<IDispatch> object_;
    std::size_t seen_ = 0;
};

} // namespace tervane::test
