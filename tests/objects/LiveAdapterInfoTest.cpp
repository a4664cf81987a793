// The object that shows scripts one live adapter.

#include "objects/sysinfo/LiveAdapterInfo.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

LiveAdapter FullAdapter() {
    LiveAdapter adapter;
    adapter.name = L"Card \u00E9";
    adapter.cookie = L"{0-2}";
    adapter.serviceName = L"svc";
    adapter.hardwareAddress = L"00-10-5A-00-00-01";
    adapter.ipAddress = L"10.0.0.2";
    adapter.subnetMask = L"255.0.0.0";
    adapter.defaultGateway = L"10.0.0.1";
    adapter.dhcpServer = L"10.0.0.3";
    adapter.isDhcp = adapter.isEthernet = adapter.isPpp = true;
    return adapter;
}

template <typename Interface>
ComPtr<Interface> Make(const LiveAdapter& adapter) {
    ComPtr<Interface> object;
    EXPECT_EQ(S_OK, CreateLiveAdapterInfo(adapter, __uuidof(Interface),
                                          reinterpret_cast<void**>(object.Put())));
    return object;
}

template <typename Interface>
std::wstring Text(const ComPtr<Interface>& object,
                  HRESULT (STDMETHODCALLTYPE Interface::*get)(BSTR*)) {
    UniqueBstr text;
    EXPECT_EQ(S_OK, (object.Get()->*get)(text.Put()));
    EXPECT_EQ(E_POINTER, (object.Get()->*get)(nullptr));
    return std::wstring(TextOf(text.Get()));
}

template <typename Interface>
long Number(const ComPtr<Interface>& object, HRESULT (STDMETHODCALLTYPE Interface::*get)(long*)) {
    long number = 4711;
    EXPECT_EQ(S_OK, (object.Get()->*get)(&number));
    EXPECT_EQ(E_POINTER, (object.Get()->*get)(nullptr));
    return number;
}

template <typename Interface>
void ExpectCommonMembers(const LiveAdapter& adapter) {
    const auto object = Make<Interface>(adapter);
    EXPECT_EQ(adapter.name, Text(object, &Interface::get_Name));
    EXPECT_EQ(adapter.ipAddress, Text(object, &Interface::get_IpAddress));
    EXPECT_EQ(adapter.subnetMask, Text(object, &Interface::get_SubnetMask));
    EXPECT_EQ(adapter.defaultGateway, Text(object, &Interface::get_DefaultGateway));
    EXPECT_EQ(adapter.hardwareAddress, Text(object, &Interface::get_HardwareAddress));
    EXPECT_EQ(adapter.dhcpServer, Text(object, &Interface::get_DhcpServer));
    EXPECT_EQ(adapter.isDhcp, Number(object, &Interface::get_IsDhcp));
    EXPECT_EQ(adapter.isEthernet, Number(object, &Interface::get_IsEthernetAdapter));
    EXPECT_EQ(adapter.isPpp, Number(object, &Interface::get_IsPppAdapter));
}

TEST(LiveAdapterInfo, ShowsEveryFactByBothInterfaces) {
    for (const LiveAdapter& adapter : {FullAdapter(), LiveAdapter()}) {
        ExpectCommonMembers<ILiveAdapterInfo>(adapter);
        ExpectCommonMembers<ILiveAdapterInfo2>(adapter);
        const auto newer = Make<ILiveAdapterInfo2>(adapter);
        EXPECT_EQ(adapter.cookie, Text(newer, &ILiveAdapterInfo2::get_Cookie));
        EXPECT_EQ(adapter.serviceName, Text(newer, &ILiveAdapterInfo2::get_ServiceName));
    }
}

TEST(LiveAdapterInfo, IsOneObjectWhoseDispatchHasAllMembers) {
    const auto object = Make<ILiveAdapterInfo>(FullAdapter());
    const auto newer = QueryFor<ILiveAdapterInfo2>(object.Get());
    ASSERT_TRUE(newer);
    EXPECT_EQ(static_cast<IDispatch*>(newer.Get()), QueryFor<IDispatch>(object.Get()).Get());
    EXPECT_EQ(QueryFor<IUnknown>(object.Get()).Get(), QueryFor<IUnknown>(newer.Get()).Get());

    EXPECT_EQ(E_POINTER, CreateLiveAdapterInfo({}, IID_IUnknown, nullptr));
    void* none = this;
    EXPECT_EQ(E_NOINTERFACE, CreateLiveAdapterInfo({}, __uuidof(IStaticAdapterInfo), &none));
    EXPECT_EQ(nullptr, none);
}

} // namespace
} // namespace tervane
