// The library's four exports, its entry point, and what its start code asks for.

#include "component/AdvisingThread.h"
#include "component/ComEdge.h"
#include "component/ModuleState.h"
#include "component/Registrar.h"
#include "component/RunTimeState.h"
#include "component/TypeLibrary.h"
#include "objects/Classes.h"

#include <algorithm>
#include <cstring>
#include <new>

using tervane::Guarded;
using tervane::ModuleState;

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
    ModuleState* state = ModuleState::Get();
    if (!state) {
        return E_INVALIDARG;
    }
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    return Guarded([&] { return state->ClassFactoryFor(clsid, iid, out); });
}

STDAPI DllCanUnloadNow() {
    // What waits for a thread that is no more would hold the library for good.
    tervane::AdvisingThread::ForgetEnded();
    const ModuleState* state = ModuleState::Get();
    return state && state->IsLocked() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
    return ModuleState::Get() ? Guarded([] { return tervane::RegisterModule(); }) : E_INVALIDARG;
}

STDAPI DllUnregisterServer() {
    return ModuleState::Get() ? Guarded([] { return tervane::UnregisterModule(); }) : E_INVALIDARG;
}

// The notifications of threads that end are not switched off: each brings the record of its
// thread's exceptions back, which nobody else would free. (The system does not switch them off
// anyway for a library with a directory of thread-local storage, which the compiler's start code
// always has.)
//
// Loading fails only without a slot for those records: all threads would share one, and the first
// two that throw at a time would bring the host down.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_THREAD_DETACH) {
        tervane::FreeRunTimeStateOfThread();
    } else if (reason == DLL_PROCESS_ATTACH) {
        if (!tervane::HasRunTimeState()) {
            return FALSE;
        }
        tervane::UseClasses(tervane::ObjectClasses());
        try {
            ModuleState::Set(new ModuleState(instance));
        } catch (const std::bad_alloc&) {
            // Without its state the library answers E_INVALIDARG; loading it succeeds.
        }
    } else if (reason == DLL_PROCESS_DETACH && !processEnds) {
        // When the process ends, the libraries that these pointers lead into may be gone already.
        tervane::AdvisingThread::LeaveWindows();
        delete ModuleState::Get();
        ModuleState::Set(nullptr);
        tervane::ReleaseTypeInfo();
        tervane::FreeRunTimeStateAtExit();
    }
    return TRUE;
}

#ifndef _WIN64
namespace {

// The start code asks whether the host has loaded a copy of the run-time library, to register the
// unwind tables there, and the system looks for it in all folders, which takes twice as long as the
// rest of loading. Ours is linked in, and its exceptions find no tables that another copy has.
//
// Here, because no program but the library may get this: in RunTimeState.cpp the linker would take
// it, and all that is beside it, into every test program whose start code asks the same.
HMODULE WINAPI FindModule(const char* name) {
    if (std::strcmp(name, "libgcc_s_dw2-1.dll") == 0) {
        return nullptr;
    }
    wchar_t wide[MAX_PATH] = {}; // all names here are ASCII
    std::copy_n(name, std::min<std::size_t>(std::strlen(name), MAX_PATH - 1), wide);
    return GetModuleHandleW(wide);
}

} // namespace

decltype(&FindModule) importOfGetModuleHandle __asm__("__imp__GetModuleHandleA@4") = &FindModule;
#endif
