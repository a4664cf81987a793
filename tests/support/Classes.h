#pragma once

// The eighteen classes, as programs in the field were promised them.

#include <TERVANELib.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace tervane::test {

struct ClassFacts {
    const wchar_t* vendor;
    const wchar_t* name;
    const wchar_t* text; // the CLSID as registration writes it
    const CLSID& clsid;
    const IID& interfaceId;
    const IID* events;     // null: it has none
    const wchar_t* bitmap; // null: no control

    std::wstring ProgId() const { return std::wstring(vendor) + L"." + name; }
};

#define TERVANE_CLASS(vendor, name, text, events, bitmap)                                          \
    { vendor, L## #name, text, __uuidof(::name), __uuidof(::I##name), events, bitmap }
inline const ClassFacts kClasses[] = {
    TERVANE_CLASS(L"Tervane", ConfigureOutlookExpress, L"{7DCAB9D6-19E5-4190-A3FE-0F252EC2FCEA}",
                  nullptr, nullptr),
    TERVANE_CLASS(L"Ostrel", GeneralSysInfo, L"{34ECB075-144C-48A7-9AD2-8760231379CE}",
                  &__uuidof(::_IGeneralSysInfoEvents), L"101"),
    TERVANE_CLASS(L"Pellow", SmtpCtl, L"{30D0EC5D-3C0D-4848-BD68-D568AC3F41E6}",
                  &__uuidof(::_ISmtpCtlEvents), L"103"),
    TERVANE_CLASS(L"Pellow", PopCtl, L"{E3F3046E-7E42-47B3-A498-7B09004897E3}",
                  &__uuidof(::_IPopCtlEvents), L"105"),
    TERVANE_CLASS(L"Pellow", EmailData, L"{D256B2D9-9C58-445A-8C38-C3AAA84EF137}", nullptr, L"107"),
    TERVANE_CLASS(L"Tervane", ConnectivityTester, L"{EFD3EA56-234D-4240-90EA-CC9FA3AF5A01}",
                  &__uuidof(::_IConnectivityTesterEvents), nullptr),
    TERVANE_CLASS(L"Tervane", DHCP, L"{780F8ADC-3150-4953-853A-975F80BCAF0A}",
                  &__uuidof(::_IDHCPEvents), nullptr),
    TERVANE_CLASS(L"Tervane", ConfigureIE, L"{BF0FF49A-8C0D-4ECE-B5C4-0BE00BED72DA}",
                  &__uuidof(::_IConfigureIEEvents), L"110"),
    TERVANE_CLASS(L"Tervane", StaticAdapterInfo, L"{535393C8-DCDA-4155-BEA2-D621C76FE903}", nullptr,
                  L"112"),
    TERVANE_CLASS(L"Tervane", LiveAdapterInfo, L"{81755D8F-D9C1-42C7-887E-B7B3FBDBACEA}", nullptr,
                  L"114"),
    TERVANE_CLASS(L"Tervane", DriveInfo, L"{5EAC3C01-174B-4BB8-B367-7097CE61C541}", nullptr,
                  L"116"),
    TERVANE_CLASS(L"Tervane", PhoneBookEntry, L"{6F0D9E95-38DE-42C9-99FD-0A6D05CA5AAB}", nullptr,
                  nullptr),
    TERVANE_CLASS(L"Tervane", RASMgr, L"{4B12229A-1343-4A35-A958-E99B1B02F63B}",
                  &__uuidof(::_IRASMgrEvents), nullptr),
    TERVANE_CLASS(L"Tervane", DHCPConfiguration, L"{23B1D1AE-A29F-4AE2-B76E-CAB6E14811C4}", nullptr,
                  nullptr),
    TERVANE_CLASS(L"Tervane", WindowMgr, L"{517431a3-30da-4ee1-b2b4-cf32b89eb911}",
                  &__uuidof(::_IWindowMgrEvents), nullptr),
    TERVANE_CLASS(L"Tervane", DisableFileAndPrintSharing, L"{1fc26549-af52-4742-9e93-1c5e22990d1e}",
                  nullptr, nullptr),
    TERVANE_CLASS(L"Tervane", Registry2, L"{e8bb94cb-7c06-445d-8dbc-6e4ccac1f905}", nullptr,
                  nullptr),
    TERVANE_CLASS(L"Tervane", AdapterInfo, L"{845ee5f2-4a22-4ad6-a838-6ff4b759608c}",
                  &__uuidof(::_IAdapterInfoEvents), L"110"),
};
#undef TERVANE_CLASS

// The class must be there.
inline const ClassFacts& FactsOf(std::wstring_view name) {
    return *std::ranges::find(kClasses, name, &ClassFacts::name);
}

} // namespace tervane::test
