#include "objects/sysinfo/StaticAdapterInfo.h"

#include "component/Answers.h"
#include "objects/Classes.h"

namespace tervane {

HRESULT StaticAdapterInfo::get_Name(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.name; });
}

HRESULT StaticAdapterInfo::get_Driver(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.driver; });
}

HRESULT StaticAdapterInfo::get_UsingDhcp(long* result) {
    return AnswerNumber(result, [&] { return adapter_.usingDhcp; });
}

HRESULT StaticAdapterInfo::get_AdapterType(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.adapterType; });
}

HRESULT StaticAdapterInfo::get_BoundToTcpip(long* result) {
    return AnswerNumber(result, [&] { return adapter_.boundToTcpip; });
}

HRESULT StaticAdapterInfo::get_BoundIndirectlyOrDirectlyToTcpip(long* result) {
    return AnswerNumber(result, [&] { return adapter_.boundIndirectlyOrDirectlyToTcpip; });
}

HRESULT StaticAdapterInfo::get_IsEnabled(long* result) {
    return AnswerNumber(result, [&] { return adapter_.isEnabled; });
}

HRESULT StaticAdapterInfo::get_IsFunctional(long* result) {
    return AnswerNumber(result, [&] { return adapter_.isFunctional; });
}

HRESULT StaticAdapterInfo::get_IsDnsStatic(long* result) {
    return AnswerNumber(result, [&] { return adapter_.isDnsStatic; });
}

HRESULT StaticAdapterInfo::get_HardwareAddress(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.hardwareAddress; });
}

HRESULT StaticAdapterInfo::get_Cookie(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.cookie; });
}

HRESULT StaticAdapterInfo::get_ServiceName(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.serviceName; });
}

HRESULT StaticAdapterInfo::get_StaticIpAddress(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.ipAddress; });
}

HRESULT StaticAdapterInfo::get_StaticSubnetMask(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.subnetMask; });
}

HRESULT StaticAdapterInfo::get_StaticDefaultGateway(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.defaultGateway; });
}

HRESULT StaticAdapterInfo::get_StaticNameServers(VARIANT* result) {
    return AnswerTexts(
        result, [&]() -> const auto& { return adapter_.nameServers; });
}

HRESULT StaticAdapterInfo::get_StaticDomainName(BSTR* result) {
    return AnswerText(result, [&] { return adapter_.domainName; });
}

HRESULT StaticAdapterInfo::get_EthernetAdapter(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] { return adapter_.isEthernet; });
}

HRESULT StaticAdapterInfo::get_PPPAdapter(VARIANT_BOOL* result) {
    return AnswerFlag(result, [&] { return adapter_.isPpp; });
}

HRESULT StaticAdapterInfo::get_WINSState(long* result) {
    return AnswerNumber(result, [&] { return adapter_.winsState; });
}

HRESULT StaticAdapterInfo::get_StaticWINSServers(VARIANT* result) {
    return AnswerTexts(
        result, [&]() -> const auto& { return adapter_.winsServers; });
}

HRESULT CreateStaticAdapterInfo(const StaticAdapter& adapter, REFIID iid, void** out) {
    return CreateFilled<StaticAdapterInfo>(CLSID_StaticAdapterInfo, adapter, iid, out);
}

namespace create {

HRESULT StaticAdapterInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::StaticAdapterInfo>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
