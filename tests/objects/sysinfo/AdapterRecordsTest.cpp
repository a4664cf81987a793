// The objects that carry an adapter's facts to scripts: every member by name, through both of the
// interfaces of each class.

#include "objects/sysinfo/GeneralSysInfo.h"
#include "objects/sysinfo/LiveAdapterInfo.h"
#include "objects/sysinfo/StaticAdapterInfo.h"
#include "support/ObjectClasses.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using Members = std::vector<std::pair<std::wstring, std::wstring>>; // by name, in words

// The first interface of the class has `members`, the second one the `newer` ones as well.
template <typename Create, typename Facts>
void ExpectOfBoth(Create create, const Facts& facts, REFIID older, REFIID newer,
                  const Members& members, const Members& newerMembers) {
    test::UseBuiltTypeLibrary();
    for (const IID* iid : {&older, &newer}) {
        ComPtr<IDispatch> object;
        ASSERT_EQ(S_OK, create(facts, *iid, reinterpret_cast<void**>(object.Put())));
        for (const auto& [name, value] : members) {
            EXPECT_EQ(value, test::Ask(object.Get(), name)) << name;
        }
        for (const auto& [name, value] : newerMembers) {
            EXPECT_EQ(iid == &newer ? value : L"error 80020006", test::Ask(object.Get(), name));
        }
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
            return member == flag ? L"true" : L"false";
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
                      {L"HardwareAddress", L"hardware"}},
                     {{L"Cookie", L"cookie"},
                      {L"ServiceName", L"service"},
                      {L"StaticIpAddress", L"ip"},
                      {L"StaticSubnetMask", L"mask"},
                      {L"StaticDefaultGateway", L"gateway"},
                      {L"StaticNameServers", L"[1, 2]"},
                      {L"StaticDomainName", L"domain"},
                      {L"EthernetAdapter", truth(&StaticAdapter::isEthernet)},
                      {L"PPPAdapter", truth(&StaticAdapter::isPpp)},
                      {L"WINSState", L"8"},
                      {L"StaticWINSServers", L"[3]"}});
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
                      {L"IsPppAdapter", number(&LiveAdapter::isPpp)}},
                     {{L"Cookie", L"cookie"}, {L"ServiceName", L"service"}});
    }
}

// What a script gets that creates such an object itself.
TEST(AdapterRecords, AreBlankAtFirst) {
    const test::Apartment apartment;
    ExpectOfBoth(&CreateStaticAdapterInfo, StaticAdapter(), __uuidof(IStaticAdapterInfo),
                 __uuidof(IStaticAdapterInfo2),
                 {{L"Name", L""}, {L"IsEnabled", L"0"}, {L"HardwareAddress", L"00-00-00-00-00-00"}},
                 {{L"StaticIpAddress", L"0.0.0.0"},
                  {L"StaticSubnetMask", L"0.0.0.0"},
                  {L"StaticDefaultGateway", L"0.0.0.0"},
                  {L"StaticNameServers", L"[]"}});
    ExpectOfBoth(&CreateLiveAdapterInfo, LiveAdapter(), __uuidof(ILiveAdapterInfo),
                 __uuidof(ILiveAdapterInfo2),
                 {{L"Name", L""},
                  {L"IpAddress", L"0.0.0.0"},
                  {L"SubnetMask", L"0.0.0.0"},
                  {L"DefaultGateway", L"0.0.0.0"},
                  {L"HardwareAddress", L"00-00-00-00-00-00"},
                  {L"DhcpServer", L"0.0.0.0"},
                  {L"IsDhcp", L"0"}},
                 {});
}

} // namespace
} // namespace tervane
