// StaticAdapterInfo through the built DLL, as a script that creates it itself meets it.

#include "support/AdapterRegistry.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

TEST(StaticAdapterInfoTest, HoldsAnEmptyRecord) {
    const Apartment apartment;
    const auto object = TestComponent::Get().Create(__uuidof(::StaticAdapterInfo));
    ASSERT_TRUE(object);
    for (const wchar_t* text :
         {L"Name", L"Driver", L"AdapterType", L"Cookie", L"ServiceName", L"StaticDomainName"}) {
        EXPECT_EQ(VT_BSTR, Read(object.Get(), text).value.Type()) << text;
        EXPECT_EQ(L"", Read(object.Get(), text).Text()) << text;
    }
    EXPECT_EQ(L"00-00-00-00-00-00", Read(object.Get(), L"HardwareAddress").Text());
    for (const wchar_t* address :
         {L"StaticIpAddress", L"StaticSubnetMask", L"StaticDefaultGateway"}) {
        EXPECT_EQ(L"0.0.0.0", Read(object.Get(), address).Text()) << address;
    }
    for (const wchar_t* number :
         {L"UsingDhcp", L"BoundToTcpip", L"BoundIndirectlyOrDirectlyToTcpip", L"IsEnabled",
          L"IsFunctional", L"IsDnsStatic", L"WINSState"}) {
        EXPECT_EQ(VT_I4, Read(object.Get(), number).value.Type()) << number;
        EXPECT_EQ(0, Read(object.Get(), number).Number()) << number;
    }
    for (const wchar_t* flag : {L"EthernetAdapter", L"PPPAdapter"}) {
        EXPECT_EQ(VT_BOOL, Read(object.Get(), flag).value.Type()) << flag;
        EXPECT_EQ(0, Read(object.Get(), flag).Number()) << flag;
    }
    for (const wchar_t* list : {L"StaticNameServers", L"StaticWINSServers"}) {
        EXPECT_EQ(VT_ARRAY | VT_VARIANT, Read(object.Get(), list).value.Type()) << list;
        EXPECT_TRUE(Read(object.Get(), list).Texts().empty()) << list;
    }
}

// The way of every script: from the registry through the snapshot to the properties.
TEST(StaticAdapterInfoTest, TellsWhatTheRegistrySays) {
    const AdapterHives hives;
    const wchar_t* const instance = L"{0A1B2C3D-0000-4000-8000-000000000001}";
    AddNtCard(hives, {instance, L"0000", L"3Com EtherLink XL", L"PCI\\VEN_10B7\\1", L"EL90XBC"});
    const RegistryKey settings = hives.machine.Create(std::wstring(kInterfaces) + instance);
    settings.WriteNumber(L"EnableDHCP", 1);
    settings.WriteText(L"NameServer", L"10.0.0.2,10.0.0.3");
    const Apartment apartment;
    const auto info = TestComponent::Get().Create(__uuidof(::GeneralSysInfo));
    ASSERT_EQ(1, Read(info.Get(), L"NumStaticAdapters").Number());
    const CallResult made = Call(info.Get(), L"GetStaticAdapterInfo", {0});
    ASSERT_EQ(VT_DISPATCH, made.value.Type());
    IDispatch* adapter = made.value.Get().pdispVal;
    EXPECT_EQ(instance, Read(adapter, L"Cookie").Text());
    EXPECT_EQ(L"3Com EtherLink XL", Read(adapter, L"Name").Text());
    EXPECT_EQ(L"EL90XBC", Read(adapter, L"Driver").Text());
    EXPECT_EQ(1, Read(adapter, L"UsingDhcp").Number());
    EXPECT_EQ(1, Read(adapter, L"IsDnsStatic").Number());
    EXPECT_EQ(-1, Read(adapter, L"EthernetAdapter").Number());
    EXPECT_EQ((std::vector<std::wstring>{L"10.0.0.2", L"10.0.0.3"}),
              Read(adapter, L"StaticNameServers").Texts());
}

TEST(StaticAdapterInfoTest, KeepsTheOlderInterfaceAsItWas) {
    const Apartment apartment;
    const auto object = TestComponent::Get().Create(__uuidof(::StaticAdapterInfo));
    const auto older = QueryFor<IStaticAdapterInfo>(object.Get());
    ASSERT_TRUE(older);
    EXPECT_EQ(L"00-00-00-00-00-00", Read(older.Get(), L"HardwareAddress").Text());
    EXPECT_EQ(DISP_E_UNKNOWNNAME, Read(older.Get(), L"Cookie").status);
}

} // namespace
} // namespace tervane::test
