#include "objects/connectivity/DHCP.h"

#include "component/ComEdge.h"
#include "component/Worker.h"
#include "objects/Classes.h"
#include "objects/connectivity/LeaseRenewal.h"

namespace tervane {
namespace {

constexpr DISPID kOnReleaseRenewComplete = 1;

// Memory may run out: then no adapter is known to have come back.
int RenewAllLeases() noexcept {
    return Contained([] { return LeaseRenewal(LeaseServices::System()).Run(); }, 0);
}

} // namespace

HRESULT DHCP::ReleaseRenew() {
    return Guarded([&] {
        WorkerRequest request;
        request.object = AddReference(Controlling());
        request.work = [this] { Fire_OnReleaseRenewComplete(RenewAllLeases()); };
        return StartWorker(std::move(request)) ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT DHCP::Fire_OnReleaseRenewComplete(LONG adapters) const {
    return FireEvent(*Sinks(), kOnReleaseRenewComplete, {adapters});
}

namespace create {

HRESULT DHCP(const ClassRow& row, IUnknown* outer, REFIID iid, void** out) {
    return CreateInstance<tervane::DHCP>(row, outer, iid, out);
}

} // namespace create
} // namespace tervane
