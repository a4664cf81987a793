#include "objects/sharing/SharingSwitch.h"

#include "objects/sharing/SharingBindings.h"
#include "objects/sharing/SharingService.h"

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
