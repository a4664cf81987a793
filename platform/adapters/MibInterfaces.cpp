#include "platform/adapters/MibInterfaces.h"

#include "platform/text/NarrowText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <span>
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

std::wstring TextOf(const ZelNet::IpAddress& address) {
    return FromNarrow(address.GetText());
}

// The address that an index of four bytes is; nothing for any other index.
std::optional<ZelNet::IpAddress> AddressOf(std::span<const std::uint32_t> row) {
    std::array<unsigned char, 4> bytes{};
    if (row.size() != bytes.size() || std::ranges::max(row) > 255) {
        return std::nullopt;
    }
    std::ranges::transform(row, bytes.begin(),
                           [](std::uint32_t byte) { return static_cast<unsigned char>(byte); });
    return ZelNet::IpAddress(std::bit_cast<std::uint32_t>(bytes));
}

// The tables are read one after another and may change meanwhile: whatever refers to an interface
// that was not there at first is passed over.
class MibReader {
public:
    MibReader(ZelNet::SnmpQuery& query, const std::atomic<bool>& stop)
        : query_(query), stop_(stop) {}

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
    // What follows the column in a variable's name.
    using Row = std::span<const std::uint32_t>;

    // Calls `take` with each row's index in the column and its variable.
    template <typename Take>
    bool WalkColumn(const char* column, Take take) {
        const Oid root(column);
        return query_.Walk(
            root, [&](const VarBind& variable) { take(variable.oid.Below(root), variable); });
    }

    // The one with that number; null when there is none.
    LiveInterface* Find(std::optional<std::int32_t> index) {
        const auto found = index ? positions_.find(*index) : positions_.end();
        return found == positions_.end() ? nullptr : &interfaces_[found->second];
    }
    LiveInterface* FindRow(Row row) {
        return row.size() == 1 ? Find(static_cast<std::int32_t>(row[0])) : nullptr;
    }

    bool ReadInterfaces() {
        const bool read = WalkColumn(kIfIndex, [&](Row, const VarBind& variable) {
            const auto index = variable.Integer();
            if (index && positions_.try_emplace(*index, interfaces_.size()).second) {
                interfaces_.emplace_back().index = static_cast<std::uint32_t>(*index);
            }
        });
        if (!read) {
            return false;
        }
        WalkColumn(kIfDescr, [&](Row row, const VarBind& variable) {
            LiveInterface* live = FindRow(row);
            if (const auto text = variable.Octets(); live && text) {
                // Some agents count the zero at the end.
                live->adapter.name = FromNarrow(text->substr(0, text->find('\0')));
            }
        });
        WalkColumn(kIfType, [&](Row row, const VarBind& variable) {
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
            if (stop_) {
                return;
            }
            query_.Walk(column.Row(live.index), [&](const VarBind& variable) {
                if (const auto bytes = variable.Octets()) {
                    live.adapter.hardwareAddress = HardwareAddressText(*bytes);
                }
            });
        }
    }

    // The index of a row is the address.
    void ReadAddresses() {
        std::unordered_map<std::uint32_t, LiveAdapter*> owners;
        WalkColumn(kIpAdEntIfIndex, [&](Row row, const VarBind& variable) {
            LiveInterface* live = Find(variable.Integer());
            const auto address = AddressOf(row);
            if (live && address && live->adapter.ipAddress == kNoAddress) {
                live->adapter.ipAddress = TextOf(*address);
                owners[address->GetValue()] = &live->adapter;
            }
        });
        WalkColumn(kIpAdEntNetMask, [&](Row row, const VarBind& variable) {
            const auto address = AddressOf(row);
            const auto owner = address ? owners.find(address->GetValue()) : owners.end();
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
        std::map<std::vector<std::uint32_t>, Route> routes;
        const auto routeOf = [&](Row row) -> Route& { return routes[{row.begin(), row.end()}]; };
        WalkColumn(kDefaultRouteDest, [&](Row row, const VarBind& variable) {
            const auto destination = variable.Address();
            routeOf(row).isDefault = destination && TextOf(*destination) == kNoAddress;
        });
        WalkColumn(kDefaultRouteMask, [&](Row row, const VarBind& variable) {
            const auto mask = variable.Address();
            if (mask && TextOf(*mask) != kNoAddress) {
                routeOf(row).isDefault = false;
            }
        });
        WalkColumn(kDefaultRouteIfIndex, [&](Row row, const VarBind& variable) {
            routeOf(row).ifIndex = variable.Integer();
        });
        WalkColumn(kDefaultRouteNextHop, [&](Row row, const VarBind& variable) {
            const Route& route = routeOf(row);
            LiveInterface* live = route.isDefault ? Find(route.ifIndex) : nullptr;
            const auto hop = variable.Address();
            if (live && hop && live->adapter.defaultGateway == kNoAddress) {
                live->adapter.defaultGateway = TextOf(*hop);
            }
        });
    }

    ZelNet::SnmpQuery& query_;
    const std::atomic<bool>& stop_;
    std::vector<LiveInterface> interfaces_;
    std::unordered_map<std::int32_t, std::size_t> positions_;
};

} // namespace

std::optional<std::vector<LiveInterface>> InterfacesByMib(ZelNet::SnmpQuery& query,
                                                          const std::atomic<bool>& stop) {
    return MibReader(query, stop).Read();
}

} // namespace tervane
