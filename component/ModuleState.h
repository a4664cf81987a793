#pragma once

// What exists once per loaded library: where it was loaded, how many things hold it, and the class
// factories made so far. Created on process attach; reachable from every thread.

#include "platform/ComValues.h"

#include <atomic>
#include <vector>

namespace tervane {

class ModuleState {
public:
    // Throws std::bad_alloc.
    explicit ModuleState(HINSTANCE instance);
    ~ModuleState();
    ModuleState(const ModuleState&) = delete;
    ModuleState& operator=(const ModuleState&) = delete;

    // The state of this library; null before process attach and when attaching ran out of memory.
    static ModuleState* Get() noexcept;
    static void Set(ModuleState* state) noexcept;

    HINSTANCE Instance() const noexcept { return instance_; }

    // Live objects, references to class factories beyond the cached one, and LockServer(TRUE) calls
    // without their LockServer(FALSE).
    void AddLock() noexcept { ++locks_; }
    void ReleaseLock() noexcept { --locks_; }
    bool IsLocked() const noexcept { return locks_ != 0; }

    // Hands out the class factory of `clsid`, made on first use and kept as long as the library is
    // loaded. CLASS_E_CLASSNOTAVAILABLE for an unknown class.
    HRESULT ClassFactoryFor(REFCLSID clsid, REFIID iid, void** out);

private:
    HINSTANCE instance_;
    std::atomic<LONG> locks_ = 0;
    CRITICAL_SECTION factoryLock_;
    // One slot per row of the class table, filled under factoryLock_ and then never changed.
    std::vector<std::atomic<IClassFactory*>> factories_;
};

// Holds the library in memory as far as COM is concerned: one per live object.
class ModuleLock {
public:
    ModuleLock() noexcept;
    ~ModuleLock();
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

} // namespace tervane
