#pragma once

// Where the class table meets the classes: each is defined beside its class, one floor up, and
// linked in by name, so that the table includes none of them.

#include "component/ClassTable.h"

namespace tervane::create {

InstanceCreator ConfigureOutlookExpress;
InstanceCreator GeneralSysInfo;
InstanceCreator SmtpCtl;
InstanceCreator PopCtl;
InstanceCreator EmailData;
InstanceCreator ConnectivityTester;
InstanceCreator DHCP;
InstanceCreator ConfigureIE;
InstanceCreator StaticAdapterInfo;
InstanceCreator LiveAdapterInfo;
InstanceCreator DriveInfo;
InstanceCreator PhoneBookEntry;
InstanceCreator RASMgr;
InstanceCreator DHCPConfiguration;
InstanceCreator WindowMgr;
InstanceCreator DisableFileAndPrintSharing;
InstanceCreator Registry2;
InstanceCreator AdapterInfo;

} // namespace tervane::create
