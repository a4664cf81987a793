#pragma once

// The one table of the creatable classes. It drives class factories, registration and the
// interfaces that tell hosts what an object is; adding a class means adding its row and the name of
// its creator, which is defined beside the class.

#include "component/ClassTable.h"

namespace tervane {

// All classes, in registration order; for UseClasses, before anything is asked of the component.
std::span<const ClassRow> ObjectClasses() noexcept;

namespace create {

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

} // namespace create
} // namespace tervane
