#include "objects/connectivity/DHCPConfiguration.h"

#include "component/Answers.h"
#include "objects/Classes.h"
#include "platform/adapters/LiveAdapterSources.h"

#include <algorithm>
#include <optional>

namespace tervane {
namespace {

bool HasGateway(const StaticAdapter& adapter) noexcept {
    return !adapter.defaultGateway.empty() && adapter.defaultGateway != kNoAddress;
}

// The installed adapters whose gateways count. Whether one is of the Ethernet class is told by its
// description or, because most cards of Windows 7 and later are called "Network Connection" or the
// like, by the interface type that its driver or the running stack has for it.
class GatewayOwners {
public:
    // `installed` must outlive this object.
    explicit GatewayOwners(const std::vector<StaticAdapter>& installed) : installed_(installed) {}

    bool Contain(const StaticAdapter& adapter) {
        return adapter.isEnabled && adapter.isFunctional &&
               adapter.boundIndirectlyOrDirectlyToTcpip && !adapter.isPpp &&
               (adapter.isEthernet || adapter.hasEthernetType || IsLiveEthernet(adapter));
    }

private:
    bool IsLiveEthernet(const StaticAdapter& adapter) {
        if (!live_) {
            LiveAdapterSources sources = LiveAdapterSources::System();
            sources.installed = [this] { return installed_; }; // not found out twice
            live_ = ListLiveAdapters(sources).value_or(std::vector<LiveAdapter>());
        }
        return std::ranges::any_of(*live_, [&](const LiveAdapter& live) {
            return live.hasEthernetType && live.cookie == adapter.cookie;
        });
    }

    const std::vector<StaticAdapter>& installed_;
    // Made when the first adapter needs it.
    std::optional<std::vector<LiveAdapter>> live_;
};

} // namespace

HRESULT DHCPConfiguration::EnableIPToUseDhcp(BSTR cookie, VARIANT_BOOL enable,
                                             VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return Apply(&AdapterConfiguration::UseDhcpForAddress, TextOf(cookie), enable != 0);
    });
}

HRESULT DHCPConfiguration::EnableDnsToUseDhcp(BSTR cookie, VARIANT_BOOL enable,
                                              VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        return Apply(&AdapterConfiguration::UseDhcpForNameServers, TextOf(cookie), enable != 0);
    });
}

HRESULT DHCPConfiguration::GetRidOfStaticGateways(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] {
        bool isDone = true;
        const std::vector<StaticAdapter> adapters = ListStaticAdapters();
        GatewayOwners owners(adapters);
        for (const StaticAdapter& adapter : adapters) {
            if (!HasGateway(adapter) || !owners.Contain(adapter)) {
                continue;
            }
            isRebootNeeded_ = true;
            // The result alone tells of a failure; the code stays what it was.
            isDone =
                AdapterConfiguration().SetGateway(adapter, kNoAddress) == ERROR_SUCCESS && isDone;
        }
        return isDone;
    });
}

HRESULT DHCPConfiguration::get_IsRebootNeeded(long* result) {
    return result == nullptr ? S_FALSE : AnswerNumber(result, [&] { return isRebootNeeded_; });
}

HRESULT DHCPConfiguration::get_LastError(BSTR* result) {
    // Deliberately by the code alone: an object that has not failed says "UNKNOWN_COOKIE" as well.
    return result == nullptr ? S_FALSE : AnswerText(result, [&] {
        return lastErrorCode_ != 0 ? L"GENERAL_ERROR" : L"UNKNOWN_COOKIE";
    });
}

HRESULT DHCPConfiguration::get_LastErrorCode(long* result) {
    return result == nullptr ? S_FALSE : AnswerNumber(result, [&] { return lastErrorCode_; });
}

bool DHCPConfiguration::Apply(Change change, std::wstring_view cookie, bool use) {
    const std::vector<StaticAdapter> adapters = ListStaticAdapters();
    const auto adapter = std::ranges::find(adapters, cookie, &StaticAdapter::cookie);
    if (adapter == adapters.end()) {
        lastErrorCode_ = 0;
        return false;
    }
    if (adapter->isPpp) {
        return true;
    }
    isRebootNeeded_ = true;
    const DWORD error = (AdapterConfiguration().*change)(*adapter, use);
    if (error != ERROR_SUCCESS) {
        lastErrorCode_ = error;
    }
    return error == ERROR_SUCCESS;
}

namespace create {

HRESULT DHCPConfiguration(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::DHCPConfiguration>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
