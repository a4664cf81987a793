// A library whose threads outlive the last FreeLibrary of its user.

#include "ZelBase/threads/ModulePin.h"

template <typename Body>
HANDLE StartWhenTold(HANDLE go, Body body) {
    return ZelBase::ModulePin::StartThread([=] {
               WaitForSingleObject(go, INFINITE);
               return body();
           })
        .Release();
}

extern "C" __declspec(dllexport) HANDLE StartLingering(HANDLE go) {
    return StartWhenTold(go, [] { return 11; });
}

// As after a fault: nothing that the routine would do at its end is done.
extern "C" __declspec(dllexport) HANDLE StartEndingItself(HANDLE go) {
    return StartWhenTold(go, [] { ZelBase::ModulePin::EndThisThread(12); });
}

// A routine's exception must not take the process with it.
extern "C" __declspec(dllexport) HANDLE StartThrowing(HANDLE go) {
    return StartWhenTold(go, [] { throw 1; });
}
