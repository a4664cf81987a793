#include "component/Worker.h"

#include "ZelBase/threads/ModulePin.h"

#include <objbase.h>

namespace tervane {
namespace {

void RunGuarded(const std::function<void()>& step) noexcept {
    if (!step) {
        return;
    }
    try {
        step();
    } catch (...) {
        // The worker still has its object to release; there is nobody to report to.
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
