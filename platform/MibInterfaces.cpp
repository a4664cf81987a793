#include "platform/MibInterfaces.h"

#include "platform/NarrowText.h"

#include <map>
#include <unordered_map>
#include <utility>

namespace tervane {
namespace {

using ZelNet::Oid;
using ZelNet::VarBind;

constexpr const char* kIfIndex = "1.3.6.1.2.1.2.2.1.1";
constexpr const char* kIfDescr = "1.3.6.1.2.1.2.2.1.2";
constexpr const char* kIfType = "1.3.6.1.2.1.2.2.1.3";
constexpr const char* kIfPhysAddress = "1.3.6.1.2.1.2.2.1.6";
constexpr const char* kIpAdEntIfIndex = "1.3.6.1.2.1.4.20.1.2";
constexpr const char* kIpAdEntNetMask = "1.3.6.1.2.1.4.20.1.3";
// The rows of the default route, with which the route table begins.
constexpr const char* kDefaultRouteDest = "1.3.6.1.2.1.4.21.1.1.0.0.0.0";
constexpr const char* kDefaultRouteIfIndex = "1.3.6.1.2.1.4.21.1.2.0.0.0.0";
constexpr const char* kDefaultRouteNextHop = "1.3.6.1.2.1.4.21.1.7.0.0.0.0";
constexpr const char* kDefaultRouteMask = "1.3.6.1.2.1.4.21.1.11.0.0.0.0";

constexpr const wchar_t* kNoAddress = L"0.0.0.0";

std::wstring TextOf(const ZelNet::IpAddress& address) {
    return FromNarrow(address.GetText());
}

// The tables are read one after another and may change meanwhile: whatever refers to an interface
// that was not there at first is passed over.
class MibReader {
public:
    explicit MibReader(ZelNet::SnmpQuery& query) : query_(query) {}

    std::optional<std::vector<LiveInterface>> Read() {
        if (!ReadInterfaces()) {
            return std::nullopt;
        }
        ReadAddresses();
        ReadDefaultRoutes();
        std::erase_if(interfaces_, [](const LiveInterface& live) {
            return live.type == InterfaceType::kLoopback;
        });
        return std::move(interfaces_);
    }

private:
    using Row = std::vector<std::uint32_t>;

    // Calls `take` with each row's index in the column and its variable.
    template <typename Take>
    bool WalkColumn(const char* column, Take take) {
        const Oid root(column);
        return query_.Walk(root, [&](const VarBind& variable) {
            const auto row = variable.oid.Below(root);
            take(Row(row.begin(), row.end()), variable);
        });
    }

    // The one with that number; null when there is none.
    LiveInterface* Find(std::optional<std::int32_t> index) {
        const auto found = index ? positions_.find(*index) : positions_.end();
        return found == positions_.end() ? nullptr : &interfaces_[found->second];
    }
    LiveInterface* FindRow(const Row& row) {
        return row.size() == 1 ? Find(static_cast<std::int32_t>(row[0])) : nullptr;
    }

    bool ReadInterfaces() {
        const bool read = WalkColumn(kIfIndex, [&](const Row&, const VarBind& variable) {
            const auto index = variable.Integer();
            if (index && positions_.try_emplace(*index, interfaces_.size()).second) {
                interfaces_.emplace_back().index = static_cast<std::uint32_t>(*index);
            }
        });
        if (!read) {
            return false;
        }
        WalkColumn(kIfDescr, [&](const Row& row, const VarBind& variable) {
            LiveInterface* live = FindRow(row);
            if (const auto text = variable.Octets(); live && text) {
                // Some agents count the zero at the end.
                live->adapter.name = FromNarrow(text->substr(0, text->find('\0')));
            }
        });
        WalkColumn(kIfType, [&](const Row& row, const VarBind& variable) {
            LiveInterface* live = FindRow(row);
            if (const auto type = variable.Integer(); live && type) {
                live->type = static_cast<InterfaceType>(*type);
            }
        });
        ReadHardwareAddresses();
        return true;
    }

    // One by one: a walk of the column may end at the first interface that has none, such as the
    // loopback, which comes first.
    void ReadHardwareAddresses() {
        const Oid column(kIfPhysAddress);
        for (LiveInterface& live : interfaces_) {
            query_.Walk(column.Row(live.index), [&](const VarBind& variable) {
                if (const auto bytes = variable.Octets()) {
                    live.adapter.hardwareAddress = HardwareAddressText(*bytes);
                }
            });
        }
    }

    // The index of a row is the address.
    void ReadAddresses() {
        std::map<Row, LiveAdapter*> owners;
        WalkColumn(kIpAdEntIfIndex, [&](const Row& row, const VarBind& variable) {
            LiveInterface* live = Find(variable.Integer());
            if (live && row.size() == 4 && live->adapter.ipAddress == kNoAddress) {
                LiveAdapter& adapter = live->adapter;
                adapter.ipAddress = std::to_wstring(row[0]) + L"." + std::to_wstring(row[1]) +
                                    L"." + std::to_wstring(row[2]) + L"." + std::to_wstring(row[3]);
                owners[row] = &adapter;
            }
        });
        WalkColumn(kIpAdEntNetMask, [&](const Row& row, const VarBind& variable) {
            const auto owner = owners.find(row);
            if (const auto mask = variable.Address(); owner != owners.end() && mask) {
                owner->second->subnetMask = TextOf(*mask);
            }
        });
    }

    // Half of all addresses also begin at 0.0.0.0: such a route has another mask.
    void ReadDefaultRoutes() {
        struct Route {
            bool isDefault = false;
            std::optional<std::int32_t> ifIndex;
        };
        std::map<Row, Route> routes;
        WalkColumn(kDefaultRouteDest, [&](const Row& row, const VarBind& variable) {
            const auto destination = variable.Address();
            routes[row].isDefault = destination && TextOf(*destination) == kNoAddress;
        });
        WalkColumn(kDefaultRouteMask, [&](const Row& row, const VarBind& variable) {
            const auto mask = variable.Address();
            if (mask && TextOf(*mask) != kNoAddress) {
                routes[row].isDefault = false;
            }
        });
        WalkColumn(kDefaultRouteIfIndex, [&](const Row& row, const VarBind& variable) {
            routes[row].ifIndex = variable.Integer();
        });
        WalkColumn(kDefaultRouteNextHop, [&](const Row& row, const VarBind& variable) {
            const Route& route = routes[row];
            LiveInterface* live = route.isDefault ? Find(route.ifIndex) : nullptr;
            const auto hop = variable.Address();
            if (live && hop && live->adapter.defaultGateway == kNoAddress) {
                live->adapter.defaultGateway = TextOf(*hop);
            }
        });
    }

    ZelNet::SnmpQuery& query_;
    std::vector<LiveInterface> interfaces_;
    std::unordered_map<std::int32_t, std::size_t> positions_;
};

} // namespace

std::optional<std::vector<LiveInterface>> InterfacesByMib(ZelNet::SnmpQuery& query) {
    return MibReader(query).Read();
}

} // namespace tervane
