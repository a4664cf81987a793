#pragma once

// The classic repair: every Ethernet adapter that has its address by DHCP gives its lease up and
// asks for a new one. What the platform's calls return tells little, so nobody looks at it: whether
// an adapter has lost or got an address is judged by the list of live adapters afterwards.

#include "ZelNet/SourceCode/IpHelper.h"
#include "objects/connectivity/VirtualDhcpDevice.h"
#include "platform/PlatformFamily.h"
#include "platform/adapters/LiveAdapter.h"
#include "platform/adapters/StaticAdapter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tervane {

// The DHCP client library, by which a lease is given back or asked for where the IP Helper library
// cannot. Tests put their own here.
class DhcpClientLibrary {
public:
    // The system's "dhcpcsvc.dll", loaded at run time; without it, nothing is done.
    static std::shared_ptr<const DhcpClientLibrary> Load();

    virtual ~DhcpClientLibrary() = default;
    // Both take the adapter's name and wait for the outcome, which only the adapter's address
    // tells afterwards.
    virtual void ReleaseParameters(const std::wstring& adapter) const = 0;
    virtual void AcquireParameters(const std::wstring& adapter) const = 0;

protected:
    DhcpClientLibrary() = default;
    DhcpClientLibrary(const DhcpClientLibrary&) = delete;
    DhcpClientLibrary& operator=(const DhcpClientLibrary&) = delete;
};

// What the repair works with; tests have their own.
struct LeaseServices {
    PlatformFamily family = PlatformFamily::kUnknown;
    std::function<std::optional<std::vector<LiveAdapter>>()> liveAdapters;
    std::function<std::vector<StaticAdapter>()> installedAdapters;
    std::shared_ptr<const ZelNet::IpHelper> ipHelper;
    std::shared_ptr<const DhcpClientLibrary> dhcpClient;
    // Null when the system has no such device.
    std::function<std::unique_ptr<VirtualDhcpDevice>()> openVirtualDevice;
    // Lets that many milliseconds pass.
    std::function<void(DWORD)> wait;

    // This machine's.
    static LeaseServices System();
};

class LeaseRenewal {
public:
    // How long a change takes to show, in milliseconds.
    static constexpr DWORD kAfterRelease = 1000;
    static constexpr DWORD kBeforeRenew = 200;
    static constexpr DWORD kAfterRenew = 3500;

    explicit LeaseRenewal(LeaseServices services) : services_(std::move(services)) {}

    // Repairs one adapter after the other; about five seconds for each. The number of those that
    // have come back with a usable address. Throws std::bad_alloc.
    int Run();

private:
    using Order = VirtualDhcpDevice::Order;

    bool Release(const LiveAdapter& adapter);
    bool Renew(const LiveAdapter& adapter);
    void GiveToVirtualDevice(Order order, const LiveAdapter& adapter);
    void Give(Order order, const LiveAdapter& adapter);
    bool GiveToIpHelper(Order order, const LiveAdapter& adapter);
    void GiveToDhcpClient(Order order, const LiveAdapter& adapter);

    LeaseServices services_;
};

} // namespace tervane
