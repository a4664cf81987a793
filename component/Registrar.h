#pragma once

// The platform's registrar (ATL.DLL) runs the registration scripts. It is taken straight from that
// library, so it works whether or not the library itself is registered.

#include "ZelBase/SystemLibrary.h"
#include "platform/ComValues.h"

#include <string>

namespace tervane {

// The registrar's published interface, as far as scripts in resources need it.
struct IRegistrar : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddReplacement(LPCOLESTR key, LPCOLESTR item) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearReplacements() = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(LPCOLESTR file, LPCOLESTR id,
                                                         LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(LPCOLESTR file, LPCOLESTR id,
                                                           LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileRegister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileUnregister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringRegister(LPCOLESTR script) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringUnregister(LPCOLESTR script) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegister(LPCOLESTR file, UINT id, LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(LPCOLESTR file, UINT id,
                                                         LPCOLESTR type) = 0;
};

enum class Registering { Register, Unregister };

class Registrar {
public:
    // Loads the registrar and tells it what "%MODULE%" stands for in `modulePath`'s scripts.
    // HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND) and the like when this system has no registrar.
    HRESULT Open(const std::wstring& modulePath);

    // Runs the script with this resource number.
    HRESULT Run(UINT script, Registering direction);

private:
    // In this order: the registrar must be released before its library is.
    ZelBase::SystemLibrary library_;
    ComPtr<IRegistrar> registrar_;
    std::wstring modulePath_;
};

// The text that "%MODULE%" stands for: the short (8.3) form of the path, which holds no blanks that
// other readers of the registry stumble over, with every apostrophe doubled, since the scripts
// quote with them. Where the file system keeps no short names, the path itself.
std::wstring ModuleReplacement(const std::wstring& modulePath);

// The work of DllRegisterServer and DllUnregisterServer.
// HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION), and nothing is written, when the code page
// cannot spell the path of the library. A class whose script fails is taken out again; those before
// it stay.
HRESULT RegisterModule();
HRESULT UnregisterModule();

} // namespace tervane
