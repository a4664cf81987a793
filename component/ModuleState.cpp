#include "component/ModuleState.h"

#include "component/ClassFactory.h"
#include "component/ClassTable.h"

namespace tervane {
namespace {

std::atomic<ModuleState*> g_state = nullptr;

} // namespace

ModuleState::ModuleState(HINSTANCE instance)
    : instance_(instance), factories_(ClassTable().size()) {
    InitializeCriticalSection(&factoryLock_);
}

ModuleState::~ModuleState() {
    for (auto& factory : factories_) {
        if (IClassFactory* made = factory.exchange(nullptr)) {
            made->Release();
        }
    }
    DeleteCriticalSection(&factoryLock_);
}

ModuleState* ModuleState::Get() noexcept {
    return g_state;
}

void ModuleState::Set(ModuleState* state) noexcept {
    g_state = state;
}

HRESULT ModuleState::ClassFactoryFor(REFCLSID clsid, REFIID iid, void** out) {
    const ClassRow* row = FindClass(clsid);
    if (!row || !row->create) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    auto& slot = factories_[row - ClassTable().data()];
    if (!slot) {
        EnterCriticalSection(&factoryLock_);
        if (!slot) {
            slot = new (std::nothrow) ClassFactory(*row);
        }
        LeaveCriticalSection(&factoryLock_);
    }
    IClassFactory* factory = slot;
    return factory ? factory->QueryInterface(iid, out) : E_OUTOFMEMORY;
}

ModuleLock::ModuleLock() noexcept {
    if (ModuleState* state = ModuleState::Get()) {
        state->AddLock();
    }
}

ModuleLock::~ModuleLock() {
    if (ModuleState* state = ModuleState::Get()) {
        state->ReleaseLock();
    }
}

} // namespace tervane
