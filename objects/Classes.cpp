#include "objects/Classes.h"

#include "TERVANELib.h"

namespace tervane {
namespace {

// CLSID, default interface and description all follow from the class's name.
#define TERVANE_CLASS(name, script, events)                                                        \
    { &CLSID_##name, L## #name " Class", script, &IID_I##name, events, &create::name }

const ClassRow kClasses[] = {
    TERVANE_CLASS(ConfigureOutlookExpress, 101, nullptr),
    TERVANE_CLASS(GeneralSysInfo, 102, &DIID__IGeneralSysInfoEvents),
    TERVANE_CLASS(SmtpCtl, 103, &DIID__ISmtpCtlEvents),
    TERVANE_CLASS(PopCtl, 104, &DIID__IPopCtlEvents),
    TERVANE_CLASS(EmailData, 105, nullptr),
    TERVANE_CLASS(ConnectivityTester, 108, &DIID__IConnectivityTesterEvents),
    TERVANE_CLASS(DHCP, 109, &DIID__IDHCPEvents),
    TERVANE_CLASS(ConfigureIE, 111, &DIID__IConfigureIEEvents),
    TERVANE_CLASS(StaticAdapterInfo, 113, nullptr),
    TERVANE_CLASS(LiveAdapterInfo, 115, nullptr),
    TERVANE_CLASS(DriveInfo, 117, nullptr),
    TERVANE_CLASS(PhoneBookEntry, 119, nullptr),
    TERVANE_CLASS(RASMgr, 121, &DIID__IRASMgrEvents),
    TERVANE_CLASS(DHCPConfiguration, 122, nullptr),
    TERVANE_CLASS(WindowMgr, 202, &DIID__IWindowMgrEvents),
    TERVANE_CLASS(DisableFileAndPrintSharing, 203, nullptr),
    TERVANE_CLASS(Registry2, 204, nullptr),
    TERVANE_CLASS(AdapterInfo, 205, &DIID__IAdapterInfoEvents),
};

#undef TERVANE_CLASS

} // namespace

std::span<const ClassRow> ObjectClasses() noexcept {
    return kClasses;
}

} // namespace tervane
