#include "objects/sharing/ServiceApi.h"

namespace tervane {

const ServiceApi& ServiceApi::System() noexcept {
    static const ServiceApi api = {
        &OpenSCManagerW,     &OpenServiceW,           &CloseServiceHandle,
        &QueryServiceStatus, &QueryServiceConfigW,    &ChangeServiceConfigW,
        &ControlService,     &EnumDependentServicesW, &Sleep,
    };
    return api;
}

} // namespace tervane
