// AdapterInfo as scripts use it: requests, their events on this thread, and the arrays of real
// adapters.

#include <winsock2.h>

#include "support/HandleCount.h"
#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <iphlpapi.h>

namespace tervane::test {
namespace {

constexpr const wchar_t* kStatic = L"B6254272-8523-427F-BF02-77A076A8A9FD";
constexpr const wchar_t* kLive = L"8E92E2FF-4CE5-4DED-8360-5E6342F08340";
constexpr const wchar_t* kStatic2 = L"76d636e1-1924-46f8-9f21-4771a07ea0e3";
constexpr const wchar_t* kLive2 = L"c4fef9b0-0ef2-40e6-9474-36a915527057";
constexpr DWORD kPatience = 30000; // ms

// What the IP Helper library itself says: the description of each adapter.
std::vector<std::wstring> RealAdapters() {
    const ZelBase::UniqueLibrary library(LoadLibraryW(L"IPHLPAPI.DLL"));
    const auto list = reinterpret_cast<decltype(&::GetAdaptersInfo)>(
        reinterpret_cast<void*>(GetProcAddress(library.Get(), "GetAdaptersInfo")));
    std::vector<IP_ADAPTER_INFO> places(100);
    auto size = static_cast<ULONG>(places.size() * sizeof places[0]);
    std::vector<std::wstring> names;
    if (list(places.data(), &size) == NO_ERROR) {
        for (const IP_ADAPTER_INFO* place = places.data(); place; place = place->Next) {
            const std::string name = place->Description;
            names.emplace_back(name.begin(), name.end());
        }
    }
    return names;
}

std::vector<Variant> Elements(const CallResult& result) {
    EXPECT_EQ(S_OK, result.status);
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, result.value.Type());
    auto elements = ReadArray(result.value.Get());
    return elements ? std::move(*elements) : std::vector<Variant>();
}

class AdapterInfoTest : public testing::Test {
protected:
    AdapterInfoTest() { cookie_ = Advise(object_.Get(), &sink_); }
    ~AdapterInfoTest() override {
        if (object_) {
            Unadvise(object_.Get(), cookie_);
        }
    }

    long Request(const wchar_t* type, int id = -1) {
        return Call(object_.Get(), L"GetAdapterInfo", {type, id}).Number();
    }
    CallResult Fetch(long id) { return Call(object_.Get(), L"GetRequestedAdapterInfo", {id}); }
    // Requests, waits for the event and returns the array's elements.
    std::vector<Variant> Get(const wchar_t* type) {
        const size_t before = sink_.Count();
        const long id = Request(type);
        EXPECT_GE(id, 1000);
        if (!sink_.WaitFor(before + 1, kPatience)) {
            ADD_FAILURE() << "no event";
            return {};
        }
        const ReceivedEvent& event = sink_[before];
        EXPECT_EQ(1, event.id);
        EXPECT_EQ(GetCurrentThreadId(), event.thread);
        EXPECT_EQ(VT_I4, event.arguments.at(0).Type());
        EXPECT_EQ(id, event.arguments.at(0).Get().lVal);
        EXPECT_EQ(VT_I2, event.arguments.at(1).Type());
        EXPECT_EQ(-1, event.arguments.at(1).Get().iVal);
        return Elements(Fetch(id));
    }
    long LastErrorCode() { return Read(object_.Get(), L"LastErrorCode").Number(); }

    const Apartment apartment_;
    ComPtr<IDispatch> object_ = TestComponent::Get().Create(__uuidof(::AdapterInfo));
    RecordingSink sink_;
    DWORD cookie_ = 0;
};

TEST_F(AdapterInfoTest, ListsTheLiveAdaptersOfThisMachine) {
    const auto names = RealAdapters();
    for (const wchar_t* type : {kLive, kLive2}) {
        std::vector<std::wstring> listed;
        for (const Variant& element : Get(type)) {
            ASSERT_EQ(VT_DISPATCH, element.Type());
            IDispatch* adapter = element.Get().pdispVal;
            listed.push_back(Read(adapter, L"Name").Text());
            EXPECT_EQ(17u, Read(adapter, L"HardwareAddress").Text().size());
            EXPECT_EQ(type == kLive2 ? S_OK : DISP_E_UNKNOWNNAME, Read(adapter, L"Cookie").status);
        }
        EXPECT_EQ(names, listed);
    }
}

TEST_F(AdapterInfoTest, ListsTheInstalledAdaptersOfThisMachine) {
    const auto first = Get(kStatic);
    const auto second = Get(kStatic2);
    ASSERT_EQ(first.size(), second.size());
    for (size_t i = 0; i < first.size(); ++i) {
        IDispatch* older = first[i].Get().pdispVal;
        IDispatch* newer = second[i].Get().pdispVal;
        EXPECT_EQ(Read(older, L"Name").Text(), Read(newer, L"Name").Text());
        EXPECT_EQ(DISP_E_UNKNOWNNAME, Read(older, L"Cookie").status);
        EXPECT_NE(L"", Read(newer, L"Cookie").Text());
    }
}

TEST_F(AdapterInfoTest, NumbersRequestsByItselfOrAsAsked) {
    const long first = Call(object_.Get(), L"GetAdapterInfo", {kLive}).Number();
    EXPECT_GE(first, 1001);
    const auto other = TestComponent::Get().Create(__uuidof(::AdapterInfo));
    EXPECT_EQ(first + 1, Call(other.Get(), L"GetAdapterInfo", {kLive}).Number());
    EXPECT_EQ(first + 2, Request(kLive, 0));
    EXPECT_EQ(first + 3, Request(kLive, 1000));
    EXPECT_EQ(999, Request(kLive, 999));
    EXPECT_EQ(1, Request(kLive, 1));
    EXPECT_TRUE(sink_.WaitFor(5, kPatience));
    EXPECT_EQ(0, LastErrorCode());
}

TEST_F(AdapterInfoTest, RefusesWhatItDoesNotKnow) {
    EXPECT_EQ(VT_EMPTY, Fetch(12345).value.Type());
    EXPECT_EQ(VT_EMPTY, Fetch(-1).value.Type());
    EXPECT_EQ(0, LastErrorCode());
    const auto direct = QueryFor<IAdapterInfo>(object_.Get());
    long id = 4711;
    EXPECT_EQ(S_OK, direct->GetAdapterInfo(nullptr, 5, &id));
    EXPECT_EQ(0, id);
    EXPECT_EQ(2, LastErrorCode());
    EXPECT_EQ(0, Request(L"{8E92E2FF-4CE5-4DED-8360-5E6342F08340}", 5));
    PumpUntil([] { return false; }, 200);
    EXPECT_EQ(0u, sink_.Count());
}

// Anybody may post to a hidden window.
TEST_F(AdapterInfoTest, BelievesNoMessage) {
    const auto strays = [] {
        const HWND window = FindWindowA(nullptr, "PostbackWindow");
        for (UINT message : {WM_USER, WM_USER + 1, WM_USER + 5}) {
            PostMessageA(window, message, 4711, 0);
        }
        return window;
    };
    Get(kLive);
    ASSERT_TRUE(strays());
    PumpUntil([] { return false; }, 100);
    EXPECT_EQ(1u, sink_.Count());
    const long id = Request(kLive);
    strays();
    EXPECT_TRUE(sink_.WaitFor(2, kPatience));
    PumpUntil([] { return false; }, 100);
    EXPECT_EQ(2u, sink_.Count());
    EXPECT_EQ(id, sink_[1].arguments.at(0).Get().lVal);
}

TEST_F(AdapterInfoTest, GivesItsListsToAHostThatNeverPumpsMessages) {
    const long id = Request(kLive2);
    const ULONGLONG start = GetTickCount64();
    while (Fetch(id).value.Type() == VT_EMPTY && GetTickCount64() - start < kPatience) {
        Sleep(5);
    }
    EXPECT_EQ(RealAdapters().size(), Elements(Fetch(id)).size());
    EXPECT_EQ(0u, sink_.Count());
}

TEST_F(AdapterInfoTest, LeavesItsListsBehindWhenItGoes) {
    const auto adapters = Get(kLive2);
    for (int i = 0; i < 10; ++i) {
        Request(i % 2 == 0 ? kLive2 : kStatic2, 5);
    }
    Unadvise(object_.Get(), cookie_);
    const ULONGLONG start = GetTickCount64();
    object_.Reset();
    EXPECT_LT(GetTickCount64() - start, 5000u);
    EXPECT_EQ(0, sink_.References());
    PumpUntil([] { return false; }, 100);
    EXPECT_EQ(1u, sink_.Count());
    for (const Variant& adapter : adapters) {
        EXPECT_NE(L"", Read(adapter.Get().pdispVal, L"Name").Text());
    }
    EXPECT_EQ(adapters.empty() ? S_OK : S_FALSE, TestComponent::Get().CanUnloadNow());
}

TEST_F(AdapterInfoTest, KeepsNothingOfRequestsThatHaveEnded) {
    const auto round = [&](size_t count) {
        const size_t before = sink_.Count();
        for (size_t i = 0; i < count; ++i) {
            Request(kLive2, 7);
        }
        EXPECT_TRUE(sink_.WaitFor(before + count, kPatience));
    };
    round(20);
    Request(kLive2, 7);
    const size_t handles = OpenHandleCount();
    round(21);
    round(20);
    EXPECT_LE(OpenHandleCount(), handles + 25); // at most those of the last round
}

// The last reference goes while the event is fired.
TEST_F(AdapterInfoTest, MayGoInItsOwnEvent) {
    class Dropping final : public RecordingSink {
    public:
        explicit Dropping(ComPtr<IDispatch>& object) : object_(object) {}

    private:
        HRESULT OnEvent(DISPID) override {
            object_.Reset();
            return S_OK;
        }
        ComPtr<IDispatch>& object_;
    };
    Unadvise(object_.Get(), cookie_);
    {
        Dropping sink(object_);
        Advise(object_.Get(), &sink);
        Request(kLive);
        ASSERT_TRUE(sink.WaitFor(1, kPatience));
        EXPECT_TRUE(
            PumpUntil([] { return TestComponent::Get().CanUnloadNow() == S_OK; }, kPatience));
        EXPECT_EQ(0, sink.References());
    }
}

} // namespace
} // namespace tervane::test
