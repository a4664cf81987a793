// The objects that carry an adapter's facts to scripts: every member by name, through both of the
// interfaces of each class.

#include "objects/sysinfo/GeneralSysInfo.h"
#include "objects/sysinfo/LiveAdapterInfo.h"
#include "objects/sysinfo/StaticAdapterInfo.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

struct Member {
    const wchar_t* name;
    std::wstring value; // as text
    bool newer = false; // only of the second interface
};

// By the type library of the built DLL: this program has none.
void Expect(IUnknown* object, REFIID iid, std::initializer_list<Member> members, bool newer) {
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> info;
    LoadTypeLibEx(test::TestComponent::Get().Path().c_str(), REGKIND_NONE, library.Put());
    ASSERT_TRUE(library && SUCCEEDED(library->GetTypeInfoOfGuid(iid, info.Put())));
    for (const Member& member : members) {
        test::CallResult read;
        DISPID id = 0;
        DISPPARAMS none = {};
        LPOLESTR name = const_cast<LPOLESTR>(member.name);
        read.status = info->GetIDsOfNames(&name, 1, &id);
        EXPECT_EQ(member.newer && !newer, FAILED(read.status)) << member.name;
        if (FAILED(read.status)) {
            continue;
        }
        EXPECT_EQ(S_OK, info->Invoke(object, id, DISPATCH_PROPERTYGET, &none, read.value.Put(),
                                     nullptr, nullptr));
        std::wstring text;
        for (const std::wstring& part : read.Texts()) {
            text += part + L";";
        }
        const auto plain = read.value.As(VT_BSTR);
        EXPECT_EQ(member.value, plain ? std::wstring(plain->Text()) : text) << member.name;
    }
}

template <typename Create, typename Facts>
void ExpectOfBoth(Create create, const Facts& facts, REFIID older, REFIID newer,
                  std::initializer_list<Member> members) {
    for (const IID* iid : {&older, &newer}) {
        ComPtr<IUnknown> object;
        ASSERT_EQ(S_OK, create(facts, *iid, reinterpret_cast<void**>(object.Put())));
        Expect(object.Get(), *iid, members, iid == &newer);
        EXPECT_EQ(QueryFor<IUnknown>(object.Get()).Get(),
                  QueryFor<IUnknown>(QueryFor<IDispatch>(object.Get()).Get()).Get());
    }
    EXPECT_EQ(E_POINTER, create(facts, older, nullptr));
}

TEST(AdapterRecords, ShowEveryFactOfAnInstalledAdapter) {
    const test::Apartment apartment;
    StaticAdapter facts;
    facts.name = L"name";
    facts.driver = L"driver";
    facts.adapterType = L"type";
    facts.hardwareAddress = L"hardware";
    facts.cookie = L"cookie";
    facts.serviceName = L"service";
    facts.ipAddress = L"ip";
    facts.subnetMask = L"mask";
    facts.defaultGateway = L"gateway";
    facts.domainName = L"domain";
    facts.nameServers = {L"1", L"2"};
    facts.winsServers = {L"3"};
    facts.winsState = 8;
    for (bool StaticAdapter::*flag :
         {&StaticAdapter::usingDhcp, &StaticAdapter::boundToTcpip,
          &StaticAdapter::boundIndirectlyOrDirectlyToTcpip, &StaticAdapter::isEnabled,
          &StaticAdapter::isFunctional, &StaticAdapter::isDnsStatic, &StaticAdapter::isEthernet,
          &StaticAdapter::isPpp}) {
        StaticAdapter one = facts;
        one.*flag = true;
        const auto number = [&](bool StaticAdapter::*member) {
            return member == flag ? L"1" : L"0";
        };
        const auto truth = [&](bool StaticAdapter::*member) {
            return member == flag ? L"-1" : L"0";
        };
        ExpectOfBoth(&CreateStaticAdapterInfo, one, __uuidof(IStaticAdapterInfo),
                     __uuidof(IStaticAdapterInfo2),
                     {{L"Name", L"name"},
                      {L"Driver", L"driver"},
                      {L"UsingDhcp", number(&StaticAdapter::usingDhcp)},
                      {L"AdapterType", L"type"},
                      {L"BoundToTcpip", number(&StaticAdapter::boundToTcpip)},
                      {L"BoundIndirectlyOrDirectlyToTcpip",
                       number(&StaticAdapter::boundIndirectlyOrDirectlyToTcpip)},
                      {L"IsEnabled", number(&StaticAdapter::isEnabled)},
                      {L"IsFunctional", number(&StaticAdapter::isFunctional)},
                      {L"IsDnsStatic", number(&StaticAdapter::isDnsStatic)},
                      {L"HardwareAddress", L"hardware"},
                      {L"Cookie", L"cookie", true},
                      {L"ServiceName", L"service", true},
                      {L"StaticIpAddress", L"ip", true},
                      {L"StaticSubnetMask", L"mask", true},
                      {L"StaticDefaultGateway", L"gateway", true},
                      {L"StaticNameServers", L"1;2;", true},
                      {L"StaticDomainName", L"domain", true},
                      {L"EthernetAdapter", truth(&StaticAdapter::isEthernet), true},
                      {L"PPPAdapter", truth(&StaticAdapter::isPpp), true},
                      {L"WINSState", L"8", true},
                      {L"StaticWINSServers", L"3;", true}});
    }
}

TEST(AdapterRecords, ShowEveryFactOfALiveAdapter) {
    const test::Apartment apartment;
    LiveAdapter facts;
    facts.name = L"name";
    facts.ipAddress = L"ip";
    facts.subnetMask = L"mask";
    facts.defaultGateway = L"gateway";
    facts.hardwareAddress = L"hardware";
    facts.dhcpServer = L"server";
    facts.cookie = L"cookie";
    facts.serviceName = L"service";
    for (bool LiveAdapter::*flag :
         {&LiveAdapter::isDhcp, &LiveAdapter::isEthernet, &LiveAdapter::isPpp}) {
        LiveAdapter one = facts;
        one.*flag = true;
        const auto number = [&](bool LiveAdapter::*member) { return member == flag ? L"1" : L"0"; };
        ExpectOfBoth(&CreateLiveAdapterInfo, one, __uuidof(ILiveAdapterInfo),
                     __uuidof(ILiveAdapterInfo2),
                     {{L"Name", L"name"},
                      {L"IpAddress", L"ip"},
                      {L"SubnetMask", L"mask"},
                      {L"DefaultGateway", L"gateway"},
                      {L"HardwareAddress", L"hardware"},
                      {L"DhcpServer", L"server"},
                      {L"IsDhcp", number(&LiveAdapter::isDhcp)},
                      {L"IsEthernetAdapter", number(&LiveAdapter::isEthernet)},
                      {L"IsPppAdapter", number(&LiveAdapter::isPpp)},
                      {L"Cookie", L"cookie", true},
                      {L"ServiceName", L"service", true}});
    }
}

// What a script gets that creates such an object itself.
TEST(AdapterRecords, AreBlankAtFirst) {
    const test::Apartment apartment;
    ExpectOfBoth(&CreateStaticAdapterInfo, StaticAdapter(), __uuidof(IStaticAdapterInfo),
                 __uuidof(IStaticAdapterInfo2),
                 {{L"Name", L""},
                  {L"IsEnabled", L"0"},
                  {L"HardwareAddress", L"00-00-00-00-00-00"},
                  {L"StaticIpAddress", L"0.0.0.0", true},
                  {L"StaticSubnetMask", L"0.0.0.0", true},
                  {L"StaticDefaultGateway", L"0.0.0.0", true},
                  {L"StaticNameServers", L"", true}});
    ExpectOfBoth(&CreateLiveAdapterInfo, LiveAdapter(), __uuidof(ILiveAdapterInfo),
                 __uuidof(ILiveAdapterInfo2),
                 {{L"Name", L""},
                  {L"IpAddress", L"0.0.0.0"},
                  {L"SubnetMask", L"0.0.0.0"},
                  {L"DefaultGateway", L"0.0.0.0"},
                  {L"HardwareAddress", L"00-00-00-00-00-00"},
                  {L"DhcpServer", L"0.0.0.0"},
                  {L"IsDhcp", L"0"}});
}

} // namespace
} // namespace tervane
