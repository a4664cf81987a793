#include <winsock2.h>

#include "bench/LiveAdapterBench.h"

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "platform/adapters/LiveAdapterSources.h"
#include "platform/adapters/LiveInterface.h"
#include "platform/adapters/MibInterfaces.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>

namespace bench {
namespace {

using tervane::LiveAdapterSources;
using ZelNet::Oid;
using ZelNet::VarBind;

void Require(bool held, const char* what) {
    if (!held) {
        Fail(what, E_UNEXPECTED);
    }
}

class NoIpHelper final : public ZelNet::IpHelper {
public:
    bool IsAvailable() const override { return false; }
    bool HasLeaseFunctions() const override { return false; }
    DWORD GetAdaptersInfo(IP_ADAPTER_INFO*, ULONG*) const override { return kMissing; }
    DWORD GetNetworkParams(FIXED_INFO*, ULONG*) const override { return kMissing; }
    DWORD GetIpForwardTable(MIB_IPFORWARDTABLE*, ULONG*, BOOL) const override { return kMissing; }
    DWORD GetInterfaceInfo(IP_INTERFACE_INFO*, ULONG*) const override { return kMissing; }
    DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP*) const override { return kMissing; }
    DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP*) const override { return kMissing; }

private:
    static constexpr DWORD kMissing = ERROR_NOT_SUPPORTED;
};

// The tables of a machine with that many cards, each with an address; reading a row costs the same
// however many there are.
class Tables {
public:
    explicit Tables(int cards) {
        for (int card = 1; card <= cards; ++card) {
            const std::string index = "." + std::to_string(card);
            const std::string address =
                ".10.0." + std::to_string(card / 250) + "." + std::to_string(card % 250);
            Add("1.3.6.1.2.1.2.2.1.1", index, ASN_INTEGER, card, "");
            Add("1.3.6.1.2.1.2.2.1.2", index, ASN_OCTETSTRING, 0, "Card" + index);
            Add("1.3.6.1.2.1.2.2.1.3", index, ASN_INTEGER, 6, "");
            Add("1.3.6.1.2.1.2.2.1.6", index, ASN_OCTETSTRING, 0, Hardware(card));
            Add("1.3.6.1.2.1.4.20.1.2", address, ASN_INTEGER, card, "");
            Add("1.3.6.1.2.1.4.20.1.3", address, ASN_IPADDRESS, 0, "\xFF\xFF\xFF\x80");
        }
    }
    static std::string Hardware(int card) {
        return {'\x02', 0, 0, 0, static_cast<char>(card / 250), static_cast<char>(card % 250)};
    }

    std::map<Oid, std::vector<VarBind>> columns;

private:
    void Add(const std::string& column, const std::string& row, BYTE type, std::int32_t number,
             const std::string& octets) {
        columns[Oid(column)].push_back({Oid(column + row), type, number, octets});
    }
};

class TableQuery final : public ZelNet::SnmpQuery {
public:
    explicit TableQuery(const Tables& tables) : columns_(tables.columns) {}
    bool GetIpAddress(const Oid&, ZelNet::IpAddress&) override { return false; }
    bool GetInteger(const Oid&, std::int32_t&) override { return false; }
    bool Walk(const Oid& oid, const Collector& collector) override {
        const auto after = columns_.upper_bound(oid);
        if (after == columns_.begin()) {
            return true;
        }
        const auto& [column, rows] = *std::prev(after);
        if (oid == column) {
            std::ranges::for_each(rows, collector);
        } else if (oid.IsUnder(column) && oid.Below(column).size() == 1) {
            collector(rows.at(oid.Below(column)[0] - 1)); // the card of that number
        }
        return true;
    }

private:
    const std::map<Oid, std::vector<VarBind>>& columns_;
};

// Cards that are all installed, too.
class ManyCards {
public:
    explicit ManyCards(int count) : tables_(count) {
        for (int card = 1; card <= count; ++card) {
            tervane::StaticAdapter& adapter = installed_.emplace_back();
            adapter.name = L"Card." + std::to_wstring(card);
            adapter.cookie = L"{" + std::to_wstring(card) + L"}";
            adapter.hardwareAddress = tervane::HardwareAddressText(Tables::Hardware(card));
        }
    }
    void List() const {
        LiveAdapterSources sources;
        sources.ipHelper = std::make_shared<NoIpHelper>();
        sources.managementInformation = [this] { return std::make_unique<TableQuery>(tables_); };
        sources.installed = [this] { return installed_; };
        sources.leaseServer = [](const tervane::StaticAdapter&) { return std::wstring(); };
        const auto adapters = ListLiveAdapters(sources);
        Require(adapters && adapters->size() == installed_.size() &&
                    adapters->back().cookie == installed_.back().cookie,
                "listing made-up adapters");
    }

private:
    Tables tables_;
    std::vector<tervane::StaticAdapter> installed_;
};

void CompareManyCards() {
    constexpr int kFew = 10;
    const ManyCards few(kFew);
    for (const int count : {100, 1000}) {
        const ManyCards many(count);
        Compare(
            {count == 100 ? "100 live adapters in one list : in lists of 10"
                          : "1,000 live adapters in one list : in lists of 10",
             count == 100 ? -1 : 1.15, 1},
            [&] { many.List(); },
            [&] {
                for (int i = 0; i < count / kFew; ++i) {
                    few.List();
                }
            });
    }
}

} // namespace

void CompareLiveAdapters() {
    const LiveAdapterSources system = LiveAdapterSources::System();
    if (!tervane::InterfacesByMib(*ZelNet::SnmpQuery::Create())) {
        std::puts("live adapters by the MIB-II tables are left out: the system has no agent");
    } else {
        LiveAdapterSources tables = system;
        tables.ipHelper = std::make_shared<NoIpHelper>();
        const auto list = [](const LiveAdapterSources& sources) {
            Require(ListLiveAdapters(sources).has_value(), "listing the live adapters");
        };
        Compare(
            {"live adapters by MIB-II tables : by IP Helper", 2.0, 3}, [&] { list(tables); },
            [&] { list(system); });
        Compare(
            {"  of this: the interfaces alone", -1, 3},
            [] { tervane::InterfacesByMib(*ZelNet::SnmpQuery::Create()); },
            [&] { tervane::InterfacesByIpHelper(*system.ipHelper); });
    }
    Compare(
        {"live adapters : GetAdaptersInfo and the installed list", -1, 3},
        [&] { Require(ListLiveAdapters(system).has_value(), "listing the live adapters"); },
        [&] {
            const ZelNet::IpHelperTable<IP_ADAPTER_INFO> bare(
                [&](IP_ADAPTER_INFO* first, ULONG* size) {
                    return system.ipHelper->GetAdaptersInfo(first, size);
                });
            system.installed();
        });
    CompareManyCards();
}

} // namespace bench
