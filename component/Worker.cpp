#include "component/Worker.h"

#include "ZelBase/threads/ModulePin.h"
#include "component/ComEdge.h"

#include <objbase.h>

namespace tervane {
namespace {

// Whatever happens, the worker still has its object to release.
void RunGuarded(const std::function<void()>& step) noexcept {
    if (step) {
        Contained(step);
    }
}

void RunWorker(WorkerRequest request) noexcept {
    CoInitialize(nullptr);
    RunGuarded(request.enter);
    RunGuarded(request.work);
    request.object.Reset();
    request.work = nullptr;
    RunGuarded(request.leave);
    if (request.uninitializeCom) {
        CoUninitialize();
    }
}

} // namespace

bool StartWorker(WorkerRequest request) {
    return static_cast<bool>(ZelBase::ModulePin::StartThread(
        [request = std::move(request)]() mutable { RunWorker(std::move(request)); }));
}

} // namespace tervane
