// AdapterInfo as scripts use it: requests, their events on this thread, and the arrays of real
// adapters.

#include "ZelNet/SourceCode/IpHelper.h"
#include "support/Classes.h"
#include "support/ObjectTest.h"

namespace tervane::test {
namespace {

constexpr const wchar_t* kStatic = L"B6254272-8523-427F-BF02-77A076A8A9FD";
constexpr const wchar_t* kLive = L"8E92E2FF-4CE5-4DED-8360-5E6342F08340";
constexpr const wchar_t* kStatic2 = L"76d636e1-1924-46f8-9f21-4771a07ea0e3";
constexpr const wchar_t* kLive2 = L"c4fef9b0-0ef2-40e6-9474-36a915527057";

// What the IP Helper library itself says: the description of each adapter.
std::vector<std::wstring> RealAdapters() {
    std::vector<IP_ADAPTER_INFO> places(100);
    auto size = static_cast<ULONG>(places.size() * sizeof places[0]);
    std::vector<std::wstring> names;
    if (ZelNet::IpHelper::Load()->GetAdaptersInfo(places.data(), &size) == NO_ERROR) {
        for (const IP_ADAPTER_INFO* place = places.data(); place; place = place->Next) {
            const std::string name = place->Description;
            names.emplace_back(name.begin(), name.end());
        }
    }
    return names;
}

class AdapterInfoTest : public ObjectTest {
protected:
    AdapterInfoTest() : ObjectTest(L"AdapterInfo") {}

    std::vector<Variant> Fetch(int id) {
        const CallResult result = Call(object_.Get(), L"GetRequestedAdapterInfo", {id});
        auto elements = ReadArray(result.value.Get());
        return elements ? std::move(*elements) : std::vector<Variant>();
    }
    // Requests, waits for the event and returns the array's elements.
    std::vector<Variant> Get(const wchar_t* type) {
        const std::wstring id = Ask(L"GetAdapterInfo", {type});
        EXPECT_EQ(L"1(" + id + L", -1s)", Event());
        return Fetch(std::stoi(id));
    }
};

TEST_F(AdapterInfoTest, ListsTheAdaptersOfThisMachine) {
    for (const wchar_t* type : {kLive, kLive2}) {
        std::vector<std::wstring> listed;
        for (const Variant& element : Get(type)) {
            ASSERT_EQ(VT_DISPATCH, element.Type());
            IDispatch* adapter = element.Get().pdispVal;
            listed.push_back(test::Ask(adapter, L"Name"));
            EXPECT_EQ(17u, test::Ask(adapter, L"HardwareAddress").size());
            EXPECT_EQ(type == kLive2 ? S_OK : DISP_E_UNKNOWNNAME, Read(adapter, L"Cookie").status);
        }
        EXPECT_EQ(RealAdapters(), listed);
    }
    const auto first = Get(kStatic);
    const auto second = Get(kStatic2);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        IDispatch* older = first[i].Get().pdispVal;
        IDispatch* newer = second[i].Get().pdispVal;
        EXPECT_EQ(test::Ask(older, L"Name"), test::Ask(newer, L"Name"));
        EXPECT_EQ(DISP_E_UNKNOWNNAME, Read(older, L"Cookie").status);
        EXPECT_NE(L"", test::Ask(newer, L"Cookie"));
    }
}

TEST_F(AdapterInfoTest, NumbersRequestsByItselfOrAsAsked) {
    const int first = std::stoi(Ask(L"GetAdapterInfo", {kLive}));
    EXPECT_GE(first, 1001);
    VARIANT omitted = {}; // what a script leaves out
    omitted.vt = VT_ERROR;
    omitted.scode = DISP_E_PARAMNOTFOUND;
    ExpectAnswers(New(L"AdapterInfo").Get(),
                  {{L"GetAdapterInfo", {kLive, omitted}, std::to_wstring(first + 1)}});
    Answers({{L"GetAdapterInfo", {kLive, 999}, L"999"}});
    EXPECT_TRUE(sink_.WaitFor(2, kPatience));
    Answers({{L"LastErrorCode", {}, L"0"}});
}

TEST_F(AdapterInfoTest, RefusesWhatItDoesNotKnow) {
    Answers({{L"GetRequestedAdapterInfo", {12345}, L"empty"},
             {L"GetRequestedAdapterInfo", {-1}, L"empty"},
             {L"LastErrorCode", {}, L"0"}});
    long id = 4711;
    EXPECT_EQ(S_OK, QueryFor<IAdapterInfo>(object_.Get())->GetAdapterInfo(nullptr, 5, &id));
    EXPECT_EQ(0, id);
    Answers({{L"LastErrorCode", {}, L"2"}});
    for (const wchar_t* type :
         {L"{8E92E2FF-4CE5-4DED-8360-5E6342F08340}", L"", L"8E92E2FF-4CE5-4DED-8360-5E6342F0834",
          L"8E92E2FF-4CE5-4DED-8360-5E6342F083400",
          L"05837B0B-B8AC-45A8-A70E-7AF18D1BCFE4"}) { // of another interface
        Answers({{L"GetAdapterInfo", {type, 5}, L"0"}});
    }
    PumpUntil([] { return false; }, 200);
    EXPECT_EQ(0u, sink_.Count());
}

TEST_F(AdapterInfoTest, GivesItsListsToAHostThatNeverPumpsMessages) {
    Answers({{L"GetAdapterInfo", {kLive2, 7}, L"7"}});
    for (int i = 0; i < 1000 && Ask(L"GetRequestedAdapterInfo", {7}) == L"empty"; ++i) {
        Sleep(20);
    }
    EXPECT_EQ(RealAdapters().size(), Fetch(7).size());
    EXPECT_EQ(0u, sink_.Count());
}

TEST_F(AdapterInfoTest, LeavesItsListsBehindWhenItGoes) {
    const auto adapters = Get(kLive2);
    for (int i = 0; i < 10; ++i) {
        Ask(L"GetAdapterInfo", {i % 2 == 0 ? kLive2 : kStatic2, 5});
    }
    object_.Reset();
    EXPECT_EQ(0, sink_.References());
    PumpUntil([] { return false; }, 100);
    EXPECT_EQ(1u, sink_.Count());
    for (const Variant& adapter : adapters) {
        EXPECT_NE(L"", test::Ask(adapter.Get().pdispVal, L"Name"));
    }
    EXPECT_EQ(adapters.empty() ? S_OK : S_FALSE, TestComponent::Get().CanUnloadNow());
}

} // namespace
} // namespace tervane::test
