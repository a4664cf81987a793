#include "objects/connectivity/LeaseRenewal.h"

#include "ZelBase/SystemLibrary.h"
#include "objects/connectivity/AdapterConfiguration.h"
#include "platform/text/LetterCase.h"

#include <algorithm>
#include <span>

namespace tervane {
namespace {

class SystemLibrary final : public DhcpClientLibrary {
public:
    void ReleaseParameters(const std::wstring& adapter) const override {
        Call("DhcpReleaseParameters", adapter);
    }
    void AcquireParameters(const std::wstring& adapter) const override {
        Call("DhcpAcquireParameters", adapter);
    }

private:
    void Call(const char* name, std::wstring adapter) const {
        if (const auto function = library_.Find<DWORD(WINAPI*)(LPWSTR)>(name)) {
            function(adapter.data());
        }
    }

    const ZelBase::SystemLibrary library_{"dhcpcsvc.dll"};
};

} // namespace

std::shared_ptr<const DhcpClientLibrary> DhcpClientLibrary::Load() {
    return std::make_shared<SystemLibrary>();
}

namespace {

// What the list of live adapters says of one.
enum class Presence { kUnknown, kGone, kThere };

struct Sight {
    Presence presence = Presence::kUnknown;
    LiveAdapter adapter;

    bool HasLeasedAddress() const { return adapter.isDhcp && IsUsableAddress(adapter.ipAddress); }
};

Sight Find(const std::optional<std::vector<LiveAdapter>>& adapters, const std::wstring& name) {
    if (!adapters) {
        return {};
    }
    const auto found = std::ranges::find(*adapters, name, &LiveAdapter::interfaceName);
    return found == adapters->end() ? Sight{Presence::kGone, {}} : Sight{Presence::kThere, *found};
}

// The interface list has a device's name around the adapter's own.
bool IsNameOf(const wchar_t* interfaceName, const std::wstring& adapterName) {
    return EqualsIgnoringAsciiCase(interfaceName, adapterName) ||
           EqualsIgnoringAsciiCase(interfaceName, L"\\DEVICE\\TCPIP_" + adapterName);
}

} // namespace

LeaseServices LeaseServices::System() {
    return {CurrentPlatformFamily(),
            [] { return ListLiveAdapters(); },
            [] { return ListStaticAdapters(); },
            ZelNet::IpHelper::Load(),
            DhcpClientLibrary::Load(),
            &VirtualDhcpDevice::Open,
            [](DWORD milliseconds) { Sleep(milliseconds); }};
}

int LeaseRenewal::Run() {
    int renewed = 0;
    const auto adapters = services_.liveAdapters();
    for (const LiveAdapter& adapter : adapters.value_or(std::vector<LiveAdapter>())) {
        if (adapter.isDhcp && adapter.isEthernet && Release(adapter) && Renew(adapter)) {
            ++renewed;
        }
    }
    return renewed;
}

bool LeaseRenewal::Release(const LiveAdapter& adapter) {
    Give(Order::kRelease, adapter);
    services_.wait(kAfterRelease);
    const Sight now = Find(services_.liveAdapters(), adapter.interfaceName);
    return now.presence == Presence::kGone ||
           (now.presence == Presence::kThere && now.adapter.isDhcp && !now.HasLeasedAddress());
}

bool LeaseRenewal::Renew(const LiveAdapter& adapter) {
    services_.wait(kBeforeRenew);
    if (Is9xFamily(services_.family)) {
        // Once more: deliberate, the device is to ask anew and not to extend what it still holds.
        GiveToVirtualDevice(Order::kRelease, adapter);
        services_.wait(kBeforeRenew);
    }
    Give(Order::kRenew, adapter);
    services_.wait(kAfterRenew);
    const Sight now = Find(services_.liveAdapters(), adapter.interfaceName);
    return now.presence == Presence::kGone || now.HasLeasedAddress();
}

void LeaseRenewal::Give(Order order, const LiveAdapter& adapter) {
    if (Is9xFamily(services_.family)) {
        GiveToVirtualDevice(order, adapter);
    } else if (!GiveToIpHelper(order, adapter)) {
        GiveToDhcpClient(order, adapter);
    }
}

void LeaseRenewal::GiveToVirtualDevice(Order order, const LiveAdapter& adapter) {
    const auto device = services_.openVirtualDevice();
    const auto address = ParseHardwareAddress(adapter.hardwareAddress);
    if (device && address && adapter.hardwareAddress != kNoHardwareAddress) {
        device->Give(order, *address);
    }
}

// False when the library cannot do it at all.
bool LeaseRenewal::GiveToIpHelper(Order order, const LiveAdapter& adapter) {
    const ZelNet::IpHelper& helper = *services_.ipHelper;
    if (!helper.HasLeaseFunctions()) {
        return false;
    }
    ZelNet::IpHelperTable<IP_INTERFACE_INFO> table(
        [&](IP_INTERFACE_INFO* list, ULONG* size) { return helper.GetInterfaceInfo(list, size); });
    if (table.Result() == ERROR_NO_DATA) { // it could be read, and is empty
        return true;
    }
    const IP_INTERFACE_INFO* list = table.Get();
    if (!list) {
        return false;
    }
    for (const IP_ADAPTER_INDEX_MAP& entry :
         std::span(list->Adapter, static_cast<std::size_t>(std::max(list->NumAdapters, 0L)))) {
        if (IsNameOf(entry.Name, adapter.interfaceName)) {
            IP_ADAPTER_INDEX_MAP copy = entry;
            order == Order::kRelease ? helper.IpReleaseAddress(&copy)
                                     : helper.IpRenewAddress(&copy);
        }
    }
    return true;
}

// The library knows adapters by their instance (on Windows NT 4, by their service), which the live
// list need not know; the card's address tells which installed one it is.
void LeaseRenewal::GiveToDhcpClient(Order order, const LiveAdapter& adapter) {
    const auto address = ParseHardwareAddress(adapter.hardwareAddress);
    if (!address || adapter.hardwareAddress == kNoHardwareAddress) {
        return;
    }
    for (const StaticAdapter& installed : services_.installedAdapters()) {
        if (ParseHardwareAddress(installed.hardwareAddress) != address) {
            continue;
        }
        if (order == Order::kRelease) {
            services_.dhcpClient->ReleaseParameters(installed.cookie);
        } else {
            services_.dhcpClient->AcquireParameters(installed.cookie);
        }
    }
}

} // namespace tervane
