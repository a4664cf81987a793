#include "bench/ServerLoad.h"

#include "ZelBase/Handles.h"
#include "bench/LateBound.h"

namespace bench {

ServerLoad::ServerLoad(const wchar_t* progId) {
    HRESULT result = CLSIDFromProgID(progId, &classId_);
    if (FAILED(result)) {
        Fail("looking up a class", result);
    }
    wchar_t classText[64];
    StringFromGUID2(classId_, classText, 64);
    std::wstring key = std::wstring(L"CLSID\\") + classText + L"\\InprocServer32";
    wchar_t path[MAX_PATH];
    DWORD size = sizeof(path);
    LSTATUS status =
        RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, path, &size);
    if (status != ERROR_SUCCESS) {
        Fail("looking up a library", HRESULT_FROM_WIN32(status));
    }
    library_ = path;
}

void ServerLoad::Run() const {
    const ZelBase::UniqueLibrary library(LoadLibraryW(library_.c_str()));
    if (!library) {
        Fail("loading a library", HRESULT_FROM_WIN32(GetLastError()));
    }
    Create(library.Get());
}

void ServerLoad::CreateLoaded() const {
    Create(GetModuleHandleW(library_.c_str()));
}

void ServerLoad::Create(HMODULE library) const {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto getClassObject = reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")));
    if (getClassObject == nullptr) {
        Fail("looking up DllGetClassObject", E_FAIL);
    }
    tervane::ComPtr<IClassFactory> factory;
    HRESULT result =
        getClassObject(classId_, IID_IClassFactory, reinterpret_cast<void**>(factory.Put()));
    tervane::ComPtr<IDispatch> object;
    if (SUCCEEDED(result)) {
        result =
            factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(object.Put()));
    }
    if (FAILED(result)) {
        Fail("creating the first object", result);
    }
}

void ServerLoad::CheckUnloaded() const {
    if (GetModuleHandleW(library_.c_str()) != nullptr) {
        Fail("unloading a library", E_UNEXPECTED);
    }
}

} // namespace bench
