#include "objects/dialup/DialUp.h"

#include "objects/dialup/RasDialUp.h"
#include "platform/PlatformFamily.h"

namespace tervane {

std::shared_ptr<const DialUp> DialUp::System() {
    ZelBase::SystemLibrary library("rasapi32.dll");
    if (!library) {
        return std::make_shared<RasDialUp<WideRas>>(RasApi<WideRas>::Missing());
    }
    if (Is9xFamily(CurrentPlatformFamily())) {
        const auto narrow = RasApi<NarrowRas>::Of(library);
        return std::make_shared<RasDialUp<NarrowRas>>(narrow, std::move(library));
    }
    const auto wide = RasApi<WideRas>::Of(library);
    return std::make_shared<RasDialUp<WideRas>>(wide, std::move(library));
}

std::shared_ptr<const DialUp> LazyDialUp::Get() {
    const ZelBase::LocalMutexLock lock(lock_);
    if (!dialUp_) {
        dialUp_ = DialUp::System();
    }
    return dialUp_;
}

} // namespace tervane
