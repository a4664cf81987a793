#include "objects/sysinfo/LiveAdapterInfo.h"

#include "component/Answers.h"
#include "objects/Classes.h"

namespace tervane {

HRESULT CreateLiveAdapterInfo(const LiveAdapter& adapter, REFIID iid, void** out) {
    return CreateFilled<LiveAdapterInfo>(CLSID_LiveAdapterInfo, adapter, iid, out);
}

HRESULT LiveAdapterInfo::get_Name(BSTR* text) {
    return ReturnText(adapter_.name, text);
}

HRESULT LiveAdapterInfo::get_IpAddress(BSTR* text) {
    return ReturnText(adapter_.ipAddress, text);
}

HRESULT LiveAdapterInfo::get_SubnetMask(BSTR* text) {
    return ReturnText(adapter_.subnetMask, text);
}

HRESULT LiveAdapterInfo::get_DefaultGateway(BSTR* text) {
    return ReturnText(adapter_.defaultGateway, text);
}

HRESULT LiveAdapterInfo::get_HardwareAddress(BSTR* text) {
    return ReturnText(adapter_.hardwareAddress, text);
}

HRESULT LiveAdapterInfo::get_DhcpServer(BSTR* text) {
    return ReturnText(adapter_.dhcpServer, text);
}

// The flags are plain numbers here, 1 for true.
HRESULT LiveAdapterInfo::get_IsDhcp(long* value) {
    return AnswerNumber(value, [&] { return adapter_.isDhcp; });
}

HRESULT LiveAdapterInfo::get_IsEthernetAdapter(long* value) {
    return AnswerNumber(value, [&] { return adapter_.isEthernet; });
}

HRESULT LiveAdapterInfo::get_IsPppAdapter(long* value) {
    return AnswerNumber(value, [&] { return adapter_.isPpp; });
}

HRESULT LiveAdapterInfo::get_Cookie(BSTR* text) {
    return ReturnText(adapter_.cookie, text);
}

HRESULT LiveAdapterInfo::get_ServiceName(BSTR* text) {
    return ReturnText(adapter_.serviceName, text);
}

namespace create {

HRESULT LiveAdapterInfo(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::LiveAdapterInfo>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
