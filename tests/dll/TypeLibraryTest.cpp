// The type library inside the built DLL against a table of what scripts and compiled clients were
// promised. The table is written by hand, so a slip in the IDL and a fault of its compiler both
// show: an identifier, a number, a name or a default that differs breaks programs in the field.

#include "support/TestComponent.h"

#include "TERVANELib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace tervane::test {
namespace {

struct InterfaceCase {
    const char* name;
    const char* guid;
    // One line per member, in the order of the virtual table:
    //   number name r|w|rw type                       a property
    //   number name(type name=default, ...) -> type name   a method or event
    // A type library keeps one spelling of a name, whatever its case: parameters called "name" show
    // as the property "Name".
    const char* members;
};

const InterfaceCase kDualInterfaces[] = {
    {"IEmailData", "{C1B7AA80-C490-4022-8A6A-F32FCB307CC5}", R"(
1 To rw BSTR
2 From rw BSTR
3 Subject rw BSTR
4 XMailer rw BSTR
5 Cc rw BSTR
6 Bcc rw BSTR
7 Date rw BSTR
8 NumHeaders r long
9 TextMessage rw BSTR
10 HtmlMessage rw BSTR
11 AddHeader(BSTR headerLine) -> bool bResult
12 RemoveHeader(long index) -> bool bResult
13 GetHeader(long index) -> BSTR strResult
14 ClearAllHeaders()
15 SetDateToNow()
16 GetHeaderByName(BSTR Name) -> BSTR strResult
17 SetHeaderByName(BSTR Name, BSTR val) -> bool bResult
)"},
    {"ISmtpCtl", "{2D1A6964-FB5F-4371-B476-F1536337D847}", R"(
1 SendMail() -> bool bResult
2 Abort() -> bool bResult
3 Login rw BSTR
4 Password rw BSTR
5 SmtpServer rw BSTR
6 Timeout rw long
7 StatusCode r BSTR
8 WorkInProgress r long
9 Success r long
10 Port rw long
11 EmailData rw object
)"},
    {"IPopCtl", "{9C8C6A44-406F-4433-872A-C568F74A278E}", R"(
1 PopServer rw BSTR
2 Port rw long
3 Login rw BSTR
4 Password rw BSTR
5 Timeout rw long
6 LastError r BSTR
7 Connected r long
8 CurrentMessageIndex r long
9 EmailData r object
10 Connect() -> bool bResult
11 GetMailCount() -> bool bResult
12 RetrieveMessage(long index) -> bool bResult
13 DeleteMessage(long index) -> bool bResult
14 Disconnect() -> bool bResult
15 AbortCurrentAction() -> bool bResult
)"},
    {"IConnectivityTester", "{A061A23D-0E7A-435A-9737-A9C76A5725EE}", R"(
1 DNSLookup(BSTR DomainName, long Timeout)
2 TestTCPPort(BSTR location, unsigned short Port, long Timeout)
3 Ping(BSTR DomainName, long Timeout, long Retries)
)"},
    {"IDHCP", "{FB17322C-0DE4-452D-A425-CEC8F6C5C98E}", R"(
1 ReleaseRenew()
)"},
    {"IDHCPConfiguration", "{BD8F7B77-3460-418F-86C6-42509EB6F8F5}", R"(
1 EnableIPToUseDhcp(BSTR strCookie, bool bEnable) -> bool bResult
2 EnableDnsToUseDhcp(BSTR strCookie, bool bEnable) -> bool bResult
3 GetRidOfStaticGateways() -> bool bResult
4 IsRebootNeeded r long
5 LastError r BSTR
6 LastErrorCode r long
)"},
    {"IGeneralSysInfo", "{2A2C2B1D-5DC6-4941-8424-C2595E4E66BE}", R"(
1 CpuSpeed r long
2 CpuVendor r BSTR
3 CpuDescription r BSTR
4 CpuFamily r BSTR
5 RamSize r long
6 SystemDriveIndex r long
7 SystemDriveTotalSize r long
8 SystemDriveFreeSpace r long
9 LargestFreeDriveIndex r long
10 LargestFreeDriveSpace r long
11 NumDrives r long
12 GetDriveInfo(long index) -> object ppDriveInfo
13 OS r BSTR
14 GetSystemInfo()
15 UsbSupported r long
16 NumUsbPorts r long
17 NumOpenUsbPorts r long
18 HostName r BSTR
19 DomainName r BSTR
20 DnsServers r BSTR
21 NumStaticAdapters r long
22 NumLiveAdapters r long
23 GetStaticAdapterInfo(long index) -> object ppAdapterInfo
24 GetLiveAdapterInfo(long index) -> object ppAdapterInfo
25 OsMajorNumber r long
26 OsMinorNumber r long
27 OsBuildNumber r long
)"},
    {"IDriveInfo", "{01C8F9A3-5A3B-4B3D-8F75-6179F7572187}", R"(
1 Type r BSTR
2 Letter r BSTR
3 TotalSize r long
4 FreeSpace r long
5 SystemDrive r long
)"},
    {"IStaticAdapterInfo", "{B6254272-8523-427F-BF02-77A076A8A9FD}", R"(
1 Name r BSTR
2 Driver r BSTR
3 UsingDhcp r long
4 AdapterType r BSTR
5 BoundToTcpip r long
6 BoundIndirectlyOrDirectlyToTcpip r long
7 IsEnabled r long
8 IsFunctional r long
9 IsDnsStatic r long
10 HardwareAddress r BSTR
)"},
    {"IStaticAdapterInfo2", "{76D636E1-1924-46F8-9F21-4771A07EA0E3}", R"(
1 Name r BSTR
2 Driver r BSTR
3 UsingDhcp r long
4 AdapterType r BSTR
5 BoundToTcpip r long
6 BoundIndirectlyOrDirectlyToTcpip r long
7 IsEnabled r long
8 IsFunctional r long
9 IsDnsStatic r long
10 HardwareAddress r BSTR
11 Cookie r BSTR
12 ServiceName r BSTR
13 StaticIpAddress r BSTR
14 StaticSubnetMask r BSTR
15 StaticDefaultGateway r BSTR
16 StaticNameServers r VARIANT
17 StaticDomainName r BSTR
18 EthernetAdapter r bool
19 PPPAdapter r bool
20 WINSState r long
21 StaticWINSServers r VARIANT
)"},
    {"ILiveAdapterInfo", "{8E92E2FF-4CE5-4DED-8360-5E6342F08340}", R"(
1 Name r BSTR
2 IpAddress r BSTR
3 SubnetMask r BSTR
4 DefaultGateway r BSTR
5 HardwareAddress r BSTR
6 DhcpServer r BSTR
7 IsDhcp r long
8 IsEthernetAdapter r long
9 IsPppAdapter r long
)"},
    {"ILiveAdapterInfo2", "{C4FEF9B0-0EF2-40E6-9474-36A915527057}", R"(
1 Name r BSTR
2 IpAddress r BSTR
3 SubnetMask r BSTR
4 DefaultGateway r BSTR
5 HardwareAddress r BSTR
6 DhcpServer r BSTR
7 IsDhcp r long
8 IsEthernetAdapter r long
9 IsPppAdapter r long
10 Cookie r BSTR
11 ServiceName r BSTR
)"},
    {"IAdapterInfo", "{05837B0B-B8AC-45A8-A70E-7AF18D1BCFE4}", R"(
1 GetAdapterInfo(BSTR strReturnType, long nRequestIDToUse=-1) -> long nRequestID
2 GetRequestedAdapterInfo(long nRequestID) -> VARIANT arAdapterData
3 LastErrorCode r long
)"},
    {"IRegistry2", "{D89BCA90-A17B-4E8D-8781-87B34B50E196}", R"(
1 DoesKeyExist(short nHive, BSTR strKeyPath) -> bool bResult
2 DoesValueExist(short nHive, BSTR strKeyPath, BSTR strValue) -> bool bResult
3 GetSubKeyNames(short nHive, BSTR strKeyPath) -> VARIANT arNames
4 GetValueNames(short nHive, BSTR strKeyPath) -> VARIANT arNames
5 GetValueType(short nHive, BSTR strKeyPath, BSTR strValue) -> long nType
6 GetValue(short nHive, BSTR strKeyPath, BSTR strValue) -> VARIANT vtValue
7 SetValue(short nHive, BSTR strKeyPath, BSTR strValue, VARIANT vtValue) -> bool bResult
8 DeleteValue(short nHive, BSTR strKeyPath, BSTR strValue) -> bool bResult
9 DeleteKey(short nHive, BSTR strKeyPath) -> bool bResult
10 CreateKey(short nHive, BSTR strKeyPath) -> bool bResult
11 GetMatchingSubKeys(short nHive, BSTR strKeyPath, BSTR strValue, BSTR strValueRegExp) -> VARIANT arNames
)"},
    {"IWindowMgr", "{292E2F6B-281A-434A-B244-DD4C094C02F1}", R"(
1 WaitOnWindow(BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="", long nCheckInterval=200, bool bIncludeInvisibleWindows=65535, long nTimeout=0) -> long nWaitID
2 WaitForWindow(BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="", long nCheckInterval=200, bool bIncludeInvisibleWindows=65535, long nTimeout=0) -> long nWaitID
3 WaitForWindowToComeAndGo(BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="", long nCheckInterval=200, bool bIncludeInvisibleWindows=65535, long nTimeout=0, bool bTimeoutForAppearanceOnly=0) -> long nWaitID
4 GetWindowState(BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="") -> long nReturn
5 SetWindowState(long nState, BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="") -> bool bReturn
6 GetMatchingWindowTitleText(BSTR strTopLevelWindowRegExp, BSTR strChildWindowRegExp="") -> BSTR strReturn
7 ClickButton(BSTR strTopLevelWindowRegExp, BSTR strButtonTextRegExp) -> bool bReturn
8 SetButtonCheckState(BSTR strTopLevelWindowRegExp, BSTR strButtonTextRegExp, bool bChecked) -> bool bReturn
9 LastErrorCode r long
10 AbortWait(long nWaitID) -> bool bReturn
)"},
    {"IConfigureIE", "{A9B92D22-950A-4941-9D70-724EE05BE0C5}", R"(
1 HomePage rw BSTR
2 Version r BSTR
3 ProgramPath r BSTR
4 DisableConnectionWizard()
5 NumFavorites r long
6 FavoriteURL(long index) -> BSTR strResult
7 FavoriteName(long index) -> BSTR strResult
8 AddFavorite(BSTR Name, BSTR url)
9 EnableAutomaticSettingDetection(long bEnable)
10 AutoConfigurationScript rw BSTR
11 HttpProxyServer rw BSTR
12 HttpsProxyServer rw BSTR
13 FtpProxyServer rw BSTR
14 GopherProxyServer rw BSTR
15 SocksProxyServer rw BSTR
16 ProxyExceptions rw BSTR
17 EnableLocalBypass(long bEnable)
18 CommitProxyServers()
)"},
    {"IConfigureOutlookExpress", "{5D55CA80-7BB8-4EA7-9F27-C70BC9515495}", R"(
1 Version r BSTR
2 ProgramPath r BSTR
3 Identities r VARIANT
4 CurrentIdentity r BSTR
5 GetMailAccounts(BSTR strIdentity="") -> VARIANT arNames
6 GetNewsAccounts(BSTR strIdentity="") -> VARIANT arNames
7 AddMailAccount(BSTR strAccount, BSTR strIncomingServer, BSTR strSmtpServer, BSTR strEmailAddress, bool bUseImap=0, BSTR strIdentity="") -> bool bResult
8 AddNewsAccount(BSTR strAccount, BSTR strNewsServer, BSTR strEmailAddress, BSTR strIdentity="") -> bool bResult
9 RemoveAccount(BSTR strAccount, BSTR strIdentity="") -> bool bResult
10 AccountSettingNames r VARIANT
11 GetAccountSetting(BSTR strAccount, BSTR strSetting, BSTR strIdentity="") -> VARIANT vtValue
12 SetAccountSetting(BSTR strAccount, BSTR strSetting, VARIANT vtValue, BSTR strIdentity="") -> bool bResult
13 GetDefaultMailAccount(BSTR strIdentity="") -> BSTR strResult
14 SetDefaultMailAccount(BSTR strAccount, BSTR strIdentity="") -> bool bResult
15 GetDefaultNewsAccount(BSTR strIdentity="") -> BSTR strResult
16 SetDefaultNewsAccount(BSTR strAccount, BSTR strIdentity="") -> bool bResult
17 LastError r BSTR
18 LastErrorCode r long
)"},
    {"IRASMgr", "{9AE5AE6F-CD39-456E-8245-34A10FC70DC1}", R"(
1 Entries r VARIANT
2 DoesEntryExist(BSTR strEntry) -> bool bResult
3 FindEntries(BSTR strEntryRegExp) -> VARIANT arNames
4 CreateEntry(BSTR strEntry, BSTR strPhoneNumber, BSTR strDeviceName="") -> bool bResult
5 RenameEntry(BSTR strEntry, BSTR strNewName) -> bool bResult
6 DeleteEntry(BSTR strEntry) -> bool bResult
7 GetEntry(BSTR strEntry) -> object ppEntry
8 Connect(BSTR strEntry, BSTR strUserName="", BSTR strPassword="") -> long nConnectionID
9 AbortConnect(long nConnectionID) -> bool bResult
10 HangUp(BSTR strEntry) -> bool bResult
11 ActiveConnections r VARIANT
12 GetConnectionState(BSTR strEntry) -> long nState
13 DefaultConnection rw BSTR
14 FindDevices(BSTR strDeviceRegExp) -> VARIANT arNames
15 GetDeviceType(BSTR strDeviceName) -> BSTR strResult
16 LastError r BSTR
17 LastErrorCode r long
)"},
    {"IPhoneBookEntry", "{550F66AC-2F70-4267-98E4-294EF653B54F}", R"(
1 Name rw BSTR
2 PhoneNumber rw BSTR
3 AreaCode rw BSTR
4 CountryCode rw long
5 UseAreaAndCountryCodes rw bool
6 DeviceName rw BSTR
7 DeviceType rw BSTR
8 UserName rw BSTR
9 Domain rw BSTR
10 Password w BSTR
11 HasPassword r bool
12 IpAddress rw BSTR
13 PrimaryDnsServer rw BSTR
14 AlternateDnsServer rw BSTR
15 PrimaryWinsServer rw BSTR
16 AlternateWinsServer rw BSTR
17 UseRemoteDefaultGateway rw bool
18 IpHeaderCompression rw bool
19 Load(BSTR strEntry) -> bool bResult
20 Save() -> bool bResult
21 LastError r BSTR
22 LastErrorCode r long
)"},
    {"IDisableFileAndPrintSharing", "{F3408154-B5F9-4E50-8922-BB6F34748672}", R"(
1 IsSharingEnabled r bool
2 DisableSharing() -> bool bResult
3 IsRebootNeeded r bool
4 LastError r BSTR
5 LastErrorCode r long
)"},
};

const InterfaceCase kEventInterfaces[] = {
    {"_IGeneralSysInfoEvents", "{74A8226B-DDFD-4394-B172-D2EAEF50B66F}", R"(
1 OnGeneralSysInfoComplete()
)"},
    {"_ISmtpCtlEvents", "{D63D4E37-A86D-416F-9351-156451730DC2}", R"(
1 OnSmtpSendMailComplete(long bSuccess, object pObj)
)"},
    {"_IPopCtlEvents", "{3060E3FB-A568-4338-BE94-09CD533ADA6A}", R"(
1 OnPopConnect(long bResult, object objRef)
2 OnPopGetMailCount(long count, object objRef)
3 OnPopRetrieveMessage(long bResult, object objRef)
4 OnPopDeleteMessage(long bResult, long index, object objRef)
5 OnPopDisconnect(long bResult, object objRef)
)"},
    {"_IConnectivityTesterEvents", "{9B9D3331-E9FC-4408-B86C-BAB2EE9B6526}", R"(
1 OnDNSLookupComplete(bool Success)
2 OnTCPPortTestComplete(bool Success)
3 OnPingComplete(bool Success)
)"},
    {"_IDHCPEvents", "{0950493B-CACC-415F-B198-BC5C884698ED}", R"(
1 OnReleaseRenewComplete(long numNics)
)"},
    {"_IConfigureIEEvents", "{1A289B56-E4BD-46A8-9C6D-99931319D3F6}", R"(
)"},
    {"_IRASMgrEvents", "{528A50E4-2BB2-4F94-94AE-56251D377828}", R"(
1 OnConnectStateChange(long nConnectionID, long nState, long nError)
2 OnConnectComplete(long nConnectionID, bool bSuccess, long nError)
)"},
    {"_IWindowMgrEvents", "{C8C6893B-037E-489B-9E40-FCB99308A1EE}", R"(
1 OnWaitOnWindowComplete(long nWaitID, long nResult)
2 OnWaitForWindowComplete(long nWaitID, long nResult)
3 OnWaitForWindowToComeAndGoComplete(long nWaitID, long nResult)
)"},
    {"_IAdapterInfoEvents", "{E52153E5-9894-4E19-AB0C-7893D2660C89}", R"(
1 OnAdapterInfoComplete(long nRequestID, bool bResult)
)"},
};

// Name, identifier and interfaces in their order; 's' marks the source one, '*' the default ones.
const InterfaceCase kClasses[] = {
    {"ConfigureOutlookExpress", "{7DCAB9D6-19E5-4190-A3FE-0F252EC2FCEA}",
     "*IConfigureOutlookExpress"},
    {"GeneralSysInfo", "{34ECB075-144C-48A7-9AD2-8760231379CE}",
     "*IGeneralSysInfo s*_IGeneralSysInfoEvents"},
    {"SmtpCtl", "{30D0EC5D-3C0D-4848-BD68-D568AC3F41E6}", "*ISmtpCtl s*_ISmtpCtlEvents"},
    {"PopCtl", "{E3F3046E-7E42-47B3-A498-7B09004897E3}", "*IPopCtl s*_IPopCtlEvents"},
    {"EmailData", "{D256B2D9-9C58-445A-8C38-C3AAA84EF137}", "*IEmailData"},
    {"ConnectivityTester", "{EFD3EA56-234D-4240-90EA-CC9FA3AF5A01}",
     "*IConnectivityTester s*_IConnectivityTesterEvents"},
    {"DHCP", "{780F8ADC-3150-4953-853A-975F80BCAF0A}", "*IDHCP s*_IDHCPEvents"},
    {"ConfigureIE", "{BF0FF49A-8C0D-4ECE-B5C4-0BE00BED72DA}",
     "*IConfigureIE s*_IConfigureIEEvents"},
    {"StaticAdapterInfo", "{535393C8-DCDA-4155-BEA2-D621C76FE903}",
     "*IStaticAdapterInfo IStaticAdapterInfo2"},
    {"LiveAdapterInfo", "{81755D8F-D9C1-42C7-887E-B7B3FBDBACEA}",
     "*ILiveAdapterInfo ILiveAdapterInfo2"},
    {"DriveInfo", "{5EAC3C01-174B-4BB8-B367-7097CE61C541}", "*IDriveInfo"},
    {"PhoneBookEntry", "{6F0D9E95-38DE-42C9-99FD-0A6D05CA5AAB}", "*IPhoneBookEntry"},
    {"RASMgr", "{4B12229A-1343-4A35-A958-E99B1B02F63B}", "*IRASMgr s*_IRASMgrEvents"},
    {"DHCPConfiguration", "{23B1D1AE-A29F-4AE2-B76E-CAB6E14811C4}", "*IDHCPConfiguration"},
    {"WindowMgr", "{517431A3-30DA-4EE1-B2B4-CF32B89EB911}", "*IWindowMgr s*_IWindowMgrEvents"},
    {"DisableFileAndPrintSharing", "{1FC26549-AF52-4742-9E93-1C5E22990D1E}",
     "*IDisableFileAndPrintSharing"},
    {"Registry2", "{E8BB94CB-7C06-445D-8DBC-6E4CCAC1F905}", "*IRegistry2"},
    {"AdapterInfo", "{845EE5F2-4A22-4AD6-A838-6FF4B759608C}",
     "*IAdapterInfo s*_IAdapterInfoEvents"},
};

std::string Narrow(const wchar_t* text) {
    return text ? std::string(text, text + wcslen(text)) : std::string();
}

std::string Narrow(const UniqueBstr& text) {
    return Narrow(text.Get());
}

std::string GuidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return Narrow(text);
}

std::string NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    UniqueBstr name;
    info->GetDocumentation(member, name.Put(), nullptr, nullptr, nullptr);
    return Narrow(name);
}

std::string HelpOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    UniqueBstr help;
    info->GetDocumentation(member, nullptr, help.Put(), nullptr, nullptr);
    return Narrow(help);
}

TYPEATTR AttributesOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    TYPEATTR copy = {};
    if (SUCCEEDED(info->GetTypeAttr(&attributes))) {
        copy = *attributes;
        info->ReleaseTypeAttr(attributes);
    }
    return copy;
}

// The types that these interfaces use; anything else shows as its number.
std::string TypeName(ITypeInfo* info, const TYPEDESC& type) {
    static const std::map<VARTYPE, const char*> names = {
        {VT_BSTR, "BSTR"},       {VT_I4, "long"},         {VT_I2, "short"},
        {VT_BOOL, "bool"},       {VT_VARIANT, "VARIANT"}, {VT_UI2, "unsigned short"},
        {VT_DISPATCH, "object"},
    };
    if (type.vt == VT_PTR && type.lptdesc->vt == VT_USERDEFINED) {
        ComPtr<ITypeInfo> target;
        info->GetRefTypeInfo(type.lptdesc->hreftype, target.Put());
        return target && NameOf(target.Get()) == "IDispatch" ? "object" : "pointer";
    }
    const auto found = names.find(type.vt);
    return found == names.end() ? "vt" + std::to_string(type.vt) : found->second;
}

std::string DefaultOf(const ELEMDESC& parameter) {
    const VARIANT& value = parameter.paramdesc.pparamdescex->varDefaultValue;
    // A value of another type would reach the method unconverted.
    if (V_VT(&value) != parameter.tdesc.vt) {
        return "=vt" + std::to_string(V_VT(&value));
    }
    switch (V_VT(&value)) {
    case VT_BSTR:
        return "=\"" + Narrow(V_BSTR(&value)) + "\"";
    case VT_BOOL:
        return "=" + std::to_string(static_cast<unsigned short>(V_BOOL(&value)));
    default:
        return "=" + std::to_string(V_I4(&value));
    }
}

// "(type name=default, ...) -> type name"
std::string Signature(ITypeInfo* info, const FUNCDESC& function) {
    BSTR names[16] = {};
    UINT count = 0;
    info->GetNames(function.memid, names, 16, &count);
    std::string parameters;
    std::string result;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        const std::string name = " " + Narrow(names[i + 1]);
        if ((flags & PARAMFLAG_FRETVAL) && (flags & PARAMFLAG_FOUT)) {
            result = " -> " + TypeName(info, *parameter.tdesc.lptdesc) + name;
        } else {
            parameters += parameters.empty() ? "" : ", ";
            parameters += (flags & PARAMFLAG_FIN) && !(flags & PARAMFLAG_FOUT) ? "" : "[not in] ";
            parameters += TypeName(info, parameter.tdesc) + name;
            parameters += flags & PARAMFLAG_FHASDEFAULT ? DefaultOf(parameter) : "";
        }
    }
    for (BSTR name : names) {
        SysFreeString(name);
    }
    return "(" + parameters + ")" + result;
}

// The one value of a property's get or put.
std::string PropertyType(ITypeInfo* info, const FUNCDESC& function) {
    if (function.cParams != 1) {
        return std::to_string(function.cParams) + " parameters";
    }
    const TYPEDESC& type = function.lprgelemdescParam[0].tdesc;
    const bool get = function.invkind == INVOKE_PROPERTYGET;
    if (get && type.vt != VT_PTR) {
        return "no result";
    }
    return TypeName(info, get ? *type.lptdesc : type);
}

// Members in the notation of the tables. Every member must have a help text, and those of a
// virtual table must lie one after the other behind IDispatch's seven.
std::string MembersOf(ITypeInfo* info, bool virtualTable) {
    std::string lines = "\n";
    const TYPEATTR attributes = AttributesOf(info);
    std::string getter;
    for (UINT i = 0; i < attributes.cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info->GetFuncDesc(i, &function))) {
            return "unreadable";
        }
        const std::string name = NameOf(info, function->memid);
        const std::string start = std::to_string(function->memid) + " " + name;
        if (function->invkind == INVOKE_FUNC) {
            lines += start + Signature(info, *function) + "\n";
        } else {
            const bool get = function->invkind == INVOKE_PROPERTYGET;
            const std::string type = " " + PropertyType(info, *function) + "\n";
            const bool pair = !get && lines.ends_with("\n" + start + " r" + type);
            if (pair) {
                lines.resize(lines.size() - (start + " r" + type).size());
            }
            lines += start + (pair ? " rw" : get ? " r" : " w") + type;
        }
        EXPECT_NE(HelpOf(info, function->memid), "") << name;
        if (virtualTable) {
            EXPECT_EQ(function->oVft, static_cast<SHORT>((7 + i) * sizeof(void*))) << name;
        }
        info->ReleaseFuncDesc(function);
    }
    EXPECT_EQ(attributes.cVars, 0) << NameOf(info);
    return lines;
}

std::string ImplementedBy(ITypeInfo* info) {
    std::string text;
    const TYPEATTR attributes = AttributesOf(info);
    for (UINT i = 0; i < attributes.cImplTypes; ++i) {
        HREFTYPE reference = 0;
        INT flags = 0;
        ComPtr<ITypeInfo> target;
        info->GetRefTypeOfImplType(i, &reference);
        info->GetRefTypeInfo(reference, target.Put());
        info->GetImplTypeFlags(i, &flags);
        text += text.empty() ? "" : " ";
        text += flags & IMPLTYPEFLAG_FSOURCE ? "s" : "";
        text += flags & IMPLTYPEFLAG_FDEFAULT ? "*" : "";
        text += target ? NameOf(target.Get()) : "unreadable";
    }
    return text;
}

class TypeLibraryTest : public testing::Test {
protected:
    TypeLibraryTest() {
        LoadTypeLibEx(TestComponent::Get().Path().c_str(), REGKIND_NONE, library_.Put());
    }
    void SetUp() override { ASSERT_TRUE(library_); }

    // The entry of that name, which must be of that kind and carry that identifier.
    ComPtr<ITypeInfo> Entry(const InterfaceCase& row, TYPEKIND kind) {
        ComPtr<ITypeInfo> found;
        for (UINT i = 0; i < library_->GetTypeInfoCount() && !found; ++i) {
            ComPtr<ITypeInfo> info;
            library_->GetTypeInfo(i, info.Put());
            if (info && NameOf(info.Get()) == row.name) {
                found = std::move(info);
            }
        }
        if (!found) {
            ADD_FAILURE() << row.name << " is missing";
            return found;
        }
        const TYPEATTR attributes = AttributesOf(found.Get());
        EXPECT_EQ(attributes.typekind, kind) << row.name;
        EXPECT_EQ(GuidText(attributes.guid), row.guid) << row.name;
        return found;
    }

    const Apartment apartment_;
    ComPtr<ITypeLib> library_;
};

TEST_F(TypeLibraryTest, CarriesItsIdentityAndNothingButTheListedEntries) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library_->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(GuidText(attributes->guid), "{BAC0FBE8-26E0-43D5-8E83-CB15EFB9BC14}");
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    EXPECT_EQ(attributes->lcid, 0u);
    EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
    library_->ReleaseTLibAttr(attributes);
    UniqueBstr name;
    UniqueBstr help;
    library_->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr);
    EXPECT_EQ(Narrow(name), "TERVANELib");
    EXPECT_EQ(Narrow(help), "Tervane 1.0 Type Library");
    EXPECT_EQ(library_->GetTypeInfoCount(),
              std::size(kClasses) + std::size(kDualInterfaces) + std::size(kEventInterfaces));
    EXPECT_EQ(library_->GetTypeInfoCount(), 47u);
}

TEST_F(TypeLibraryTest, DescribesEveryInterface) {
    constexpr WORD kDual = TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE;
    for (const InterfaceCase& row : kDualInterfaces) {
        const auto dispatch = Entry(row, TKIND_DISPATCH);
        // The virtual-table side of a dual interface hides behind index -1.
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> table;
        ASSERT_TRUE(dispatch && SUCCEEDED(dispatch->GetRefTypeOfImplType(-1, &reference)) &&
                    SUCCEEDED(dispatch->GetRefTypeInfo(reference, table.Put())))
            << row.name;
        // The dispatch side never shows OLE automation.
        EXPECT_EQ(AttributesOf(dispatch.Get()).wTypeFlags & ~TYPEFLAG_FOLEAUTOMATION, kDual)
            << row.name;
        EXPECT_EQ(AttributesOf(table.Get()).wTypeFlags, kDual | TYPEFLAG_FOLEAUTOMATION)
            << row.name;
        EXPECT_EQ(ImplementedBy(table.Get()), "IDispatch") << row.name;
        EXPECT_EQ(HelpOf(dispatch.Get()), row.name + std::string(" Interface"));
        EXPECT_EQ(MembersOf(table.Get(), true), row.members) << row.name;
    }
}

TEST_F(TypeLibraryTest, DescribesEveryEventInterface) {
    for (const InterfaceCase& row : kEventInterfaces) {
        const auto info = Entry(row, TKIND_DISPATCH);
        ASSERT_TRUE(info) << row.name;
        EXPECT_EQ(AttributesOf(info.Get()).wTypeFlags & TYPEFLAG_FDUAL, 0) << row.name;
        EXPECT_EQ(HelpOf(info.Get()), row.name + std::string(" Interface"));
        EXPECT_EQ(MembersOf(info.Get(), false), row.members) << row.name;
    }
}

TEST_F(TypeLibraryTest, DescribesEveryClass) {
    for (const InterfaceCase& row : kClasses) {
        const auto info = Entry(row, TKIND_COCLASS);
        ASSERT_TRUE(info) << row.name;
        EXPECT_NE(AttributesOf(info.Get()).wTypeFlags & TYPEFLAG_FCANCREATE, 0) << row.name;
        EXPECT_EQ(HelpOf(info.Get()), row.name + std::string(" Class"));
        EXPECT_EQ(ImplementedBy(info.Get()), row.members) << row.name;
    }
}

// Records what a wait is asked for; the other members are not called.
class WaitRecorder final : public IWindowMgr {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitOnWindow(BSTR, BSTR, long, VARIANT_BOOL, long, long*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitForWindow(BSTR, BSTR, long, VARIANT_BOOL, long, long*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitForWindowToComeAndGo(BSTR topLevel, BSTR child, long interval,
                                                       VARIANT_BOOL invisible, long timeout,
                                                       VARIANT_BOOL appearanceOnly,
                                                       long* id) override {
        std::ostringstream text;
        text << Narrow(topLevel) << "," << Narrow(child) << "," << interval << "," << invisible
             << "," << timeout << "," << appearanceOnly;
        received = text.str();
        *id = 7;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetWindowState(BSTR, BSTR, long*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetWindowState(long, BSTR, BSTR, VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetMatchingWindowTitleText(BSTR, BSTR, BSTR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ClickButton(BSTR, BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetButtonCheckState(BSTR, BSTR, VARIANT_BOOL,
                                                  VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_LastErrorCode(long*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AbortWait(long, VARIANT_BOOL*) override { return E_NOTIMPL; }

    std::string received;
};

TEST_F(TypeLibraryTest, FillsInTheDefaultsThatACallOmits) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(library_->GetTypeInfoOfGuid(__uuidof(IWindowMgr), info.Put()), S_OK);
    WaitRecorder recorder;
    const auto call = [&](std::initializer_list<Argument> arguments) {
        std::vector<VARIANT> reversed(arguments.size());
        std::transform(arguments.begin(), arguments.end(), reversed.rbegin(),
                       [](const Argument& argument) { return argument.value.Get(); });
        DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        Variant result;
        EXPECT_EQ(info->Invoke(&recorder, 3, DISPATCH_METHOD, &parameters, result.Put(), nullptr,
                               nullptr),
                  S_OK);
        EXPECT_EQ(V_I4(&result.Get()), 7);
        return recorder.received;
    };
    EXPECT_EQ(call({L"Setup"}), "Setup,,200,-1,0,0");
    EXPECT_EQ(call({L"Setup", L"Next", 50, false}), "Setup,Next,50,0,0,0");
    // What a script leaves out between two commas.
    VARIANT omitted = {};
    V_VT(&omitted) = VT_ERROR;
    V_ERROR(&omitted) = DISP_E_PARAMNOTFOUND;
    EXPECT_EQ(call({L"Setup", L"Next", omitted, omitted, 3, true}), "Setup,Next,200,-1,3,-1");
}

} // namespace
} // namespace tervane::test
