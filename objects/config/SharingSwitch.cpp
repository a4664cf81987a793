#include "objects/config/SharingSwitch.h"

#include "objects/config/SharingBindings.h"
#include "objects/config/SharingService.h"

namespace tervane {

std::unique_ptr<SharingSwitch> SharingSwitch::For(PlatformFamily family) {
    if (IsNtFamily(family)) {
        return std::make_unique<SharingService>();
    }
    if (Is9xFamily(family)) {
        return std::make_unique<SharingBindings>();
    }
    return nullptr;
}

} // namespace tervane
