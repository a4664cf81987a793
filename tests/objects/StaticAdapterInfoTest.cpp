// The object that carries an adapter's record to scripts, through both of its interfaces.

#include "objects/sysinfo/StaticAdapterInfo.h"

#include "support/TestComponent.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

StaticAdapter AnyAdapter() {
    StaticAdapter adapter;
    adapter.name = L"3Com EtherLink XL";
    adapter.cookie = L"{1}";
    adapter.defaultGateway = L"10.0.0.1";
    adapter.nameServers = {L"10.0.0.3", L"10.0.0.4"};
    adapter.winsState = 8;
    adapter.usingDhcp = true;
    adapter.isEthernet = true;
    return adapter;
}

template <typename Interface>
ComPtr<Interface> MakeObject(const StaticAdapter& adapter) {
    ComPtr<Interface> object;
    CreateStaticAdapterInfo(adapter, __uuidof(Interface), reinterpret_cast<void**>(object.Put()));
    return object;
}

std::wstring TextOf(IStaticAdapterInfo2& object,
                    HRESULT (STDMETHODCALLTYPE IStaticAdapterInfo2::*get)(BSTR*)) {
    UniqueBstr text;
    EXPECT_EQ(S_OK, (object.*get)(text.Put()));
    return std::wstring(tervane::TextOf(text.Get()));
}

TEST(StaticAdapterInfoTest, TellsItsRecord) {
    const test::Apartment apartment;
    const auto object = MakeObject<IStaticAdapterInfo2>(AnyAdapter());
    ASSERT_TRUE(object);
    IStaticAdapterInfo2& adapter = *object.Get();
    EXPECT_EQ(L"3Com EtherLink XL", TextOf(adapter, &IStaticAdapterInfo2::get_Name));
    EXPECT_EQ(L"{1}", TextOf(adapter, &IStaticAdapterInfo2::get_Cookie));
    EXPECT_EQ(L"0.0.0.0", TextOf(adapter, &IStaticAdapterInfo2::get_StaticIpAddress));
    EXPECT_EQ(L"10.0.0.1", TextOf(adapter, &IStaticAdapterInfo2::get_StaticDefaultGateway));
    long number = 0;
    EXPECT_EQ(S_OK, adapter.get_UsingDhcp(&number));
    EXPECT_EQ(1, number);
    EXPECT_EQ(S_OK, adapter.get_WINSState(&number));
    EXPECT_EQ(8, number);
    VARIANT_BOOL flag = 0;
    EXPECT_EQ(S_OK, adapter.get_EthernetAdapter(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
    Variant servers;
    EXPECT_EQ(S_OK, adapter.get_StaticNameServers(servers.Put()));
    const auto elements = ReadArray(servers.Get());
    ASSERT_TRUE(elements && elements->size() == 2);
    EXPECT_EQ(L"10.0.0.4", (*elements)[1].Text());
    EXPECT_EQ(E_POINTER, adapter.get_StaticNameServers(nullptr));
}

TEST(StaticAdapterInfoTest, ServesTheOlderInterfaceAsWell) {
    const test::Apartment apartment;
    const auto older = MakeObject<IStaticAdapterInfo>(AnyAdapter());
    const auto wider = QueryFor<IStaticAdapterInfo2>(older.Get());
    ASSERT_TRUE(older && wider);
    UniqueBstr name;
    EXPECT_EQ(S_OK, older->get_Name(name.Put()));
    EXPECT_EQ(L"3Com EtherLink XL", tervane::TextOf(name.Get()));
    long number = 0;
    EXPECT_EQ(S_OK, older->get_UsingDhcp(&number));
    EXPECT_EQ(1, number);
    EXPECT_EQ(E_POINTER, older->get_IsEnabled(nullptr));
    EXPECT_EQ(L"{1}", TextOf(*wider.Get(), &IStaticAdapterInfo2::get_Cookie));
    EXPECT_EQ(QueryFor<IUnknown>(older.Get()).Get(), QueryFor<IUnknown>(wider.Get()).Get());
    EXPECT_EQ(QueryFor<IDispatch>(older.Get()).Get(), static_cast<IDispatch*>(wider.Get()));
}

} // namespace
} // namespace tervane
