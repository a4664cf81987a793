#include "objects/connectivity/DHCPConfiguration.h"

#include "component/Answers.h"
#include "component/Creators.h"

#include <algorithm>

namespace tervane {
namespace {

constexpr wchar_t kNoGateway[] = L"0.0.0.0";

bool MayHaveGatewayRemoved(const StaticAdapter& adapter) noexcept {
    const bool isEligible = adapter.isEnabled && adapter.isFunctional &&
                            adapter.boundIndirectlyOrDirectlyToTcpip && adapter.isEthernet;
    return isEligible && !adapter.isPpp;
}

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
        for (const StaticAdapter& adapter : ListStaticAdapters()) {
            const std::wstring& gateway = adapter.defaultGateway;
            if (!MayHaveGatewayRemoved(adapter) || gateway.empty() || gateway == kNoGateway) {
                continue;
            }
            isRebootNeeded_ = true;
            // The result alone tells of a failure; the code stays what it was.
            isDone =
                AdapterConfiguration().SetGateway(adapter, kNoGateway) == ERROR_SUCCESS && isDone;
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
