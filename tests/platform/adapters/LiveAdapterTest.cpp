// The list of live adapters: machines that the test makes up, described by the IP Helper library
// and by MIB-II tables, and the real one, described by both.

#include "platform/adapters/LiveAdapterSources.h"
#include "platform/registry/RegistryKey.h"
#include "support/FakeIpHelper.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>

namespace tervane {

namespace {

using test::FakeAdapter;
using test::FakeIpHelper;
using ZelNet::Oid;
using ZelNet::VarBind;

// A line of text for each.
std::vector<std::string> Describe(const std::optional<std::vector<LiveAdapter>>& adapters) {
    std::vector<std::string> lines;
    for (const LiveAdapter& adapter : adapters.value_or(std::vector<LiveAdapter>())) {
        std::wstring text = adapter.name;
        for (const std::wstring& part :
             {adapter.cookie, adapter.serviceName, adapter.hardwareAddress, adapter.ipAddress,
              adapter.subnetMask, adapter.defaultGateway, adapter.dhcpServer}) {
            text += L" | " + part;
        }
        text += L" |";
        text += adapter.isDhcp ? L" dhcp" : L"";
        text += adapter.isEthernet ? L" ethernet" : L"";
        text += adapter.isPpp ? L" ppp" : L"";
        lines.emplace_back(text.begin(), text.end());
    }
    return lines;
}

// MIB-II tables that the test fills.
class FakeMib final : public ZelNet::SnmpQuery {
public:
    using Rows = std::map<Oid, VarBind>;

    FakeMib(const Rows& rows, const Oid& broken) : rows_(rows), broken_(broken) {}

    bool GetIpAddress(const Oid&, ZelNet::IpAddress&) override { return false; }
    bool GetInteger(const Oid&, std::int32_t&) override { return false; }
    bool Walk(const Oid& oid, const Collector& collector) override {
        for (auto row = rows_.lower_bound(oid); row != rows_.end() && row->first.IsUnder(oid);
             ++row) {
            collector(row->second);
        }
        return !broken_.IsValid() || !oid.IsUnder(broken_);
    }

private:
    const Rows& rows_;
    const Oid& broken_;
};

class LiveAdapterTest : public testing::Test {
protected:
    LiveAdapterTest() {
        sources_.ipHelper = ipHelper_;
        sources_.managementInformation = [this] {
            return std::make_unique<FakeMib>(mib_, broken_);
        };
        sources_.installed = [this] { return installed_; };
        sources_.leaseServer = [](const StaticAdapter& adapter) {
            return adapter.usingDhcp ? L"10.0.0.9" : L"";
        };
    }

    void Number(const std::string& oid, std::int32_t number) {
        mib_[Oid(oid)] = {Oid(oid), ASN_INTEGER, number, ""};
    }
    void Octets(const std::string& oid, BYTE type, const std::string& octets) {
        mib_[Oid(oid)] = {Oid(oid), type, 0, octets};
    }
    void Address(const std::string& oid, const std::string& address) {
        const std::uint32_t value = ZelNet::IpAddress(address).GetValue();
        Octets(oid, ASN_IPADDRESS, {reinterpret_cast<const char*>(&value), sizeof value});
    }
    // Tells the tables what the library tells of the same adapters.
    void FillMib() {
        Number("1.3.6.1.2.1.2.2.1.1.1", 1);
        Number("1.3.6.1.2.1.2.2.1.3.1", 24); // the loopback, which has no hardware address
        for (const FakeAdapter& adapter : ipHelper_->adapters) {
            const std::string index = "." + std::to_string(adapter.index);
            const auto number = static_cast<std::int32_t>(adapter.index);
            Number("1.3.6.1.2.1.2.2.1.1" + index, number);
            Octets("1.3.6.1.2.1.2.2.1.2" + index, ASN_OCTETSTRING,
                   adapter.description + '\0'); // as some agents do
            Number("1.3.6.1.2.1.2.2.1.3" + index, static_cast<std::int32_t>(adapter.type));
            Octets("1.3.6.1.2.1.2.2.1.6" + index, ASN_OCTETSTRING, adapter.hardware);
            Number("1.3.6.1.2.1.4.20.1.2." + adapter.address, number);
            Address("1.3.6.1.2.1.4.20.1.3." + adapter.address, adapter.mask);
            if (adapter.gateway != "0.0.0.0") {
                Address("1.3.6.1.2.1.4.21.1.1.0.0.0.0", "0.0.0.0");
                Number("1.3.6.1.2.1.4.21.1.2.0.0.0.0", number);
                Address("1.3.6.1.2.1.4.21.1.7.0.0.0.0", adapter.gateway);
                Address("1.3.6.1.2.1.4.21.1.11.0.0.0.0", "0.0.0.0");
            }
        }
    }
    std::optional<std::vector<LiveAdapter>> ListByMib() {
        ipHelper_->adaptersError = ERROR_NOT_SUPPORTED;
        return ListLiveAdapters(sources_);
    }

    std::shared_ptr<FakeIpHelper> ipHelper_ = std::make_shared<FakeIpHelper>();
    FakeMib::Rows mib_;
    Oid broken_; // the part of the tables that cannot be walked to its end
    std::vector<StaticAdapter> installed_;
    LiveAdapterSources sources_;
};

const std::string kCard("\x00\x10\x5A\x00\x00\x01", 6);
constexpr const wchar_t* kCardText = L"00-10-5A-00-00-01";

StaticAdapter Installed(const wchar_t* name, const wchar_t* cookie, const wchar_t* address,
                        bool dhcp = false) {
    StaticAdapter adapter;
    adapter.name = name;
    adapter.cookie = cookie;
    adapter.serviceName = std::wstring(L"service of ") + cookie;
    adapter.hardwareAddress = address;
    adapter.usingDhcp = dhcp;
    return adapter;
}

TEST_F(LiveAdapterTest, IsTheSameByTheLibraryAndByTheTables) {
    ipHelper_->adapters = {
        {"{2}", "Second Card", 6, kCard, "192.168.7.1", "255.255.0.0", "0.0.0.0", false, "", 2},
        {"{3}", "Wireless", 71, "\xFE\xDC\xBA\x98\x76\x54", "0.0.0.0", "0.0.0.0", "0.0.0.0", false,
         "", 3},
        {"{4}", "Dial-up", 23, "12345678", "172.16.0.9", "255.255.255.255", "0.0.0.0", false, "",
         4},
        {"{5}", "9x dial-up", 6, "DEST\x12\x34", "172.16.0.8", "255.0.0.0", "0.0.0.0", false, "",
         5},
        {"{6}", "USB Cable Modem", 6, kCard, "172.16.0.7", "255.0.0.0", "0.0.0.0", false, "", 6},
        {"{7}", "Token ring", 9, "", "172.16.0.5", "255.0.0.0", "0.0.0.0", false, "", 7},
        {"{1}", "First Card", 6, kCard, "10.0.0.2", "255.255.255.0", "10.0.0.1", true, "10.0.0.9",
         65539},
    };
    installed_ = {Installed(L"First Card", L"{1}", kCardText, true),
                  Installed(L"second card", L"{2}", kCardText),
                  Installed(L"USB Cable Modem", L"{6}", kCardText),
                  Installed(L"Without an address", L"{9}", L"00-00-00-00-00-00")};
    const std::vector<std::string> expected = {
        "Second Card | {2} | service of {2} | 00-10-5A-00-00-01 | 192.168.7.1 | 255.255.0.0 | "
        "0.0.0.0 | 0.0.0.0 | ethernet",
        "Wireless |  |  | FE-DC-BA-98-76-54 | 0.0.0.0 | 0.0.0.0 | 0.0.0.0 | 0.0.0.0 | ethernet",
        "Dial-up |  |  | 00-00-00-00-00-00 | 172.16.0.9 | 255.255.255.255 | 0.0.0.0 | 0.0.0.0 | "
        "ppp",
        "9x dial-up |  |  | 44-45-53-54-12-34 | 172.16.0.8 | 255.0.0.0 | 0.0.0.0 | 0.0.0.0 |",
        "USB Cable Modem | {6} | service of {6} | 00-10-5A-00-00-01 | 172.16.0.7 | 255.0.0.0 | "
        "0.0.0.0 | 0.0.0.0 |",
        "Token ring |  |  | 00-00-00-00-00-00 | 172.16.0.5 | 255.0.0.0 | 0.0.0.0 | 0.0.0.0 |",
        "First Card | {1} | service of {1} | 00-10-5A-00-00-01 | 10.0.0.2 | 255.255.255.0 | "
        "10.0.0.1 | 10.0.0.9 | dhcp ethernet"};
    EXPECT_EQ(expected, Describe(ListLiveAdapters(sources_)));
    FillMib();
    EXPECT_EQ(expected, Describe(ListByMib()));
}

TEST_F(LiveAdapterTest, IsTheInstalledAdapterOfThatInstanceBeforeThatOfThatAddress) {
    ipHelper_->adapters = {{"{aB}", "Renamed", 6, kCard}, {"{other}", "Renamed", 6, kCard}};
    installed_ = {Installed(L"A", L"{CD}", kCardText), Installed(L"B", L"{Ab}", L"none")};
    const auto adapters = ListLiveAdapters(sources_).value();
    EXPECT_EQ(adapters[0].cookie, L"{Ab}");
    EXPECT_EQ(adapters[0].interfaceName, L"{aB}");
    EXPECT_EQ(adapters[1].cookie, L"{CD}");
    installed_.clear();
    EXPECT_EQ(ListLiveAdapters(sources_).value()[0].cookie, L"");
}

TEST_F(LiveAdapterTest, IsEmptyOnlyWhenNoInterfaceIsThere) {
    EXPECT_EQ(0u, ListLiveAdapters(sources_).value().size()); // the library says so
    EXPECT_EQ(0u, ListByMib().value().size());
    sources_.managementInformation = [] { return nullptr; };
    EXPECT_FALSE(ListByMib());
}

TEST_F(LiveAdapterTest, MakesTheBestOfTablesThatChangeOrBreak) {
    ipHelper_->adapters = {
        {"{1}", "Card", 6, kCard, "10.0.0.2", "255.0.0.0", "10.0.0.1", true, "", 2}};
    FillMib();
    // The second address of the same card, the address and the route of an interface that is gone,
    // values of wrong types, rows of strange shape, the lower half of all addresses.
    Number("1.3.6.1.2.1.4.20.1.2.10.0.0.3", 2);
    Address("1.3.6.1.2.1.4.20.1.3.10.0.0.3", "255.255.0.0");
    Number("1.3.6.1.2.1.4.20.1.2.10.0.0.1", 77);
    Number("1.3.6.1.2.1.4.20.1.2.10.0.0", 2);
    Number("1.3.6.1.2.1.2.2.1.3.77", 6);
    Octets("1.3.6.1.2.1.2.2.1.1.5", ASN_OCTETSTRING, "five");
    Number("1.3.6.1.2.1.2.2.1.2.2.1", 2);
    Address("1.3.6.1.2.1.4.21.1.1.0.0.0.0.1", "0.0.0.0");
    Number("1.3.6.1.2.1.4.21.1.2.0.0.0.0.1", 2);
    Address("1.3.6.1.2.1.4.21.1.7.0.0.0.0.1", "10.0.0.77");
    Address("1.3.6.1.2.1.4.21.1.11.0.0.0.0.1", "128.0.0.0");
    const std::string whole = "Card |  |  | 00-10-5A-00-00-01 | 10.0.0.2 | 255.0.0.0 | 10.0.0.1 | "
                              "0.0.0.0 | ethernet";
    EXPECT_EQ(std::vector{whole}, Describe(ListByMib()));
    // The route alone is the other half's.
    Address("1.3.6.1.2.1.4.21.1.11.0.0.0.0", "128.0.0.0");
    EXPECT_EQ(L"0.0.0.0", ListByMib().value()[0].defaultGateway);

    broken_ = Oid("1.3.6.1.2.1.4"); // what came before the end counts
    EXPECT_EQ(L"10.0.0.2", ListByMib().value()[0].ipAddress);
    broken_ = Oid("1.3.6.1.2.1.2.2.1.1"); // but a list may not be cut short
    EXPECT_FALSE(ListByMib());
}

TEST(LeaseServer, IsFoundWhereEachWindowsNotesIt) {
    const test::ScratchHive machine(RegistryHive::kLocalMachine);
    const auto server = LiveAdapterSources::System().leaseServer;
    StaticAdapter adapter;
    adapter.cookie = L"{0-1}";
    adapter.serviceName = L"E100B";
    EXPECT_EQ(server(adapter), L"");
    const std::wstring services = L"System\\CurrentControlSet\\Services\\";
    machine.Create(services + L"E100B\\Parameters\\Tcpip").WriteText(L"DhcpServer", L"10.0.0.4");
    EXPECT_EQ(server(adapter), L"10.0.0.4"); // Windows NT 4
    const auto settings = machine.Create(services + L"Tcpip\\Parameters\\Interfaces\\{0-1}");
    settings.WriteNumber(L"DhcpServer", 4); // no text
    EXPECT_EQ(server(adapter), L"10.0.0.4");
    settings.WriteText(L"DhcpServer", L"10.0.0.5");
    EXPECT_EQ(server(adapter), L"10.0.0.5");
}

// Wine notes neither leases nor their configuration in the registry, as Windows does, so that the
// tables know of no lease.
class RealMachineTest : public testing::Test {
protected:
    static std::optional<std::vector<LiveAdapter>> List(bool byTables) {
        LiveAdapterSources sources = LiveAdapterSources::System();
        if (byTables) {
            auto missing = std::make_shared<FakeIpHelper>();
            missing->adaptersError = ERROR_NOT_SUPPORTED;
            sources.ipHelper = missing;
        }
        auto adapters = ListLiveAdapters(sources);
        for (LiveAdapter& adapter : adapters.value()) {
            adapter.isDhcp = false;
        }
        return adapters;
    }
};

TEST_F(RealMachineTest, IsTheSameByTheLibraryAndByTheTables) {
    const auto byLibrary = Describe(List(false));
    EXPECT_EQ(byLibrary, Describe(List(true)));
    for (const std::string& line : byLibrary) {
        RecordProperty("adapter", line);
    }
}

// In the networks of tests/network/adapters.sh, which chooses by the name.
class AdapterNetworkTest : public RealMachineTest {
protected:
    void SetUp() override {
        if (!std::getenv("TERVANE_NAMESPACE")) {
            GTEST_SKIP() << "run by tests/network/adapters.sh, in a network of its own";
        }
    }
    static std::vector<std::string> Addresses(bool byTables) {
        auto adapters = List(byTables);
        for (LiveAdapter& adapter : *adapters) {
            EXPECT_EQ(adapter.cookie, adapter.interfaceName);
            EXPECT_EQ(adapter.cookie, adapter.serviceName);
            adapter.cookie = adapter.serviceName = L"";
        }
        std::vector<std::string> lines = Describe(adapters);
        std::ranges::sort(lines);
        return lines;
    }
};

TEST_F(AdapterNetworkTest, FullNetworkShowsEveryCardAsItIs) {
    const std::vector<std::string> expected = {
        "first |  |  | 02-10-5A-00-00-01 | 10.55.1.1 | 255.255.255.0 | 10.55.1.254 | 0.0.0.0 | "
        "ethernet",
        "fourth |  |  | 44-45-53-54-00-04 | 172.20.0.1 | 255.255.240.0 | 0.0.0.0 | 0.0.0.0 |",
        "second |  |  | 02-10-5A-00-00-02 | 10.56.2.1 | 255.255.0.0 | 0.0.0.0 | 0.0.0.0 | ethernet",
        "third |  |  | 02-10-5A-00-00-03 | 0.0.0.0 | 0.0.0.0 | 0.0.0.0 | 0.0.0.0 | ethernet"};
    EXPECT_EQ(expected, Addresses(false));
    EXPECT_EQ(expected, Addresses(true));
}

TEST_F(AdapterNetworkTest, EmptyNetworkHasNoAdapterAndSaysSo) {
    EXPECT_TRUE(Addresses(false).empty());
    EXPECT_TRUE(Addresses(true).empty());
}

} // namespace
} // namespace tervane
