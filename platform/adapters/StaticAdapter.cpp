#include "platform/adapters/StaticAdapter.h"

#include "platform/PlatformFamily.h"
#include "platform/adapters/NtAdapters.h"
#include "platform/adapters/Win9xAdapters.h"

namespace tervane {

std::vector<StaticAdapter> ListStaticAdapters(const std::atomic<bool>& stop) {
    const PlatformFamily family = CurrentPlatformFamily();
    if (Is9xFamily(family)) {
        return List9xAdapters(stop);
    }
    return IsNtFamily(family) ? ListNtAdapters(family, DeviceApi::System(), stop)
                              : std::vector<StaticAdapter>();
}

} // namespace tervane
