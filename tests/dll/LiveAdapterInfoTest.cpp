// LiveAdapterInfo as scripts meet it: late-bound members of the built library.

#include "support/TestComponent.h"

#include <TERVANELib.h>
#include <gtest/gtest.h>

namespace tervane::test {
namespace {

TEST(LiveAdapterInfoObject, OffersAllMembersByTheNewerInterfaceAndNineByTheOlder) {
    const Apartment apartment;
    const auto object = TestComponent::Get().Create(__uuidof(::LiveAdapterInfo));
    const auto older = QueryFor<ILiveAdapterInfo>(object.Get());
    for (const wchar_t* text : {L"Name", L"Cookie", L"ServiceName"}) {
        EXPECT_EQ(VT_BSTR, Read(object.Get(), text).value.Type()) << text;
        EXPECT_EQ(L"", Read(object.Get(), text).Text()) << text;
    }
    for (const wchar_t* address : {L"IpAddress", L"SubnetMask", L"DefaultGateway", L"DhcpServer"}) {
        EXPECT_EQ(L"0.0.0.0", Read(object.Get(), address).Text()) << address;
        EXPECT_EQ(L"0.0.0.0", Read(older.Get(), address).Text()) << address;
    }
    EXPECT_EQ(L"00-00-00-00-00-00", Read(older.Get(), L"HardwareAddress").Text());
    for (const wchar_t* flag : {L"IsDhcp", L"IsEthernetAdapter", L"IsPppAdapter"}) {
        EXPECT_EQ(VT_I4, Read(older.Get(), flag).value.Type()) << flag;
    }
    EXPECT_EQ(DISP_E_UNKNOWNNAME, Read(older.Get(), L"Cookie").status);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, Read(older.Get(), L"ServiceName").status);
}

} // namespace
} // namespace tervane::test
