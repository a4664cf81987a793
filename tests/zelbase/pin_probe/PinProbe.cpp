// A library whose thread outlives the last FreeLibrary of its user.

#include "ZelBase/threads/ModulePin.h"

extern "C" __declspec(dllexport) HANDLE StartLingering(HANDLE go) {
    return ZelBase::ModulePin::StartThread([go] {
               WaitForSingleObject(go, INFINITE);
               return 11;
           })
        .Release();
}

// As after a fault: nothing that the routine would do at its end is done.
extern "C" __declspec(dllexport) HANDLE StartEndingItself() {
    return ZelBase::ModulePin::StartThread([] { ZelBase::ModulePin::EndThisThread(12); }).Release();
}

// A routine's exception must not take the process with it.
extern "C" __declspec(dllexport) HANDLE StartThrowing() {
    return ZelBase::ModulePin::StartThread([] { throw 1; }).Release();
}
