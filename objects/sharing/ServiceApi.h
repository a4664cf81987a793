#pragma once

// The functions of Windows' service manager as a table, which tests replace to get services that
// refuse, hang or are missing.

#include <windows.h>

namespace tervane {

struct ServiceApi {
    decltype(&OpenSCManagerW) openManager;
    decltype(&OpenServiceW) open;
    decltype(&CloseServiceHandle) close;
    decltype(&QueryServiceStatus) queryStatus;
    decltype(&QueryServiceConfigW) queryConfig;
    decltype(&ChangeServiceConfigW) changeConfig;
    decltype(&ControlService) control;
    decltype(&EnumDependentServicesW) enumDependents;
    decltype(&Sleep) sleep;

    // The real ones.
    static const ServiceApi& System() noexcept;
};

} // namespace tervane
