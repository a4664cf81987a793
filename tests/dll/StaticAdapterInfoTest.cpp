// An installed adapter through the built DLL.

#include "support/AdapterRegistry.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

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

} // namespace
} // namespace tervane::test
