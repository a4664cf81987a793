#include "platform/StaticAdapter.h"

#include "platform/NtAdapters.h"
#include "platform/PlatformFamily.h"
#include "platform/Win9xAdapters.h"

namespace tervane {

std::vector<StaticAdapter> ListStaticAdapters() {
    const PlatformFamily family = CurrentPlatformFamily();
    if (Is9xFamily(family)) {
        return List9xAdapters();
    }
    return IsNtFamily(family) ? ListNtAdapters(family) : std::vector<StaticAdapter>();
}

} // namespace tervane
