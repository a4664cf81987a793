#include "component/Registrar.h"

#include "component/ClassTable.h"
#include "component/TypeLibrary.h"
#include "platform/text/NarrowText.h"

namespace tervane {
namespace {

constexpr CLSID kRegistrarClass = {
    0x44ec053a, 0x400f, 0x11d0, {0x9d, 0xcd, 0x00, 0xa0, 0xc9, 0x03, 0x91, 0xd3}};
constexpr IID kRegistrarInterface = {
    0x44ec053b, 0x400f, 0x11d0, {0x9d, 0xcd, 0x00, 0xa0, 0xc9, 0x03, 0x91, 0xd3}};

HRESULT LastError() noexcept {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

// Readers of the registry may know the machine's code page only. A path that it cannot spell would
// lead them to another file or none, so nothing is registered there; taking out is always possible.
HRESULT CheckPath(const std::wstring& path, Registering direction) {
    if (path.empty()) {
        return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
    }
    return direction == Registering::Unregister || ToNarrow(path)
               ? S_OK
               : HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION);
}

// Registering a class leaves all of it or nothing.
HRESULT RunScript(Registrar& registrar, UINT script, Registering direction) {
    const HRESULT result = registrar.Run(script, direction);
    if (FAILED(result) && direction == Registering::Register) {
        registrar.Run(script, Registering::Unregister);
    }
    return result;
}

// Runs every class's script. Registering stops at the first that fails; unregistering goes on, so
// that as little as possible stays behind. The first failure is the result.
HRESULT RunScripts(Registering direction) {
    const std::wstring path = ModulePath();
    if (const HRESULT result = CheckPath(path, direction); FAILED(result)) {
        return result;
    }
    Registrar registrar;
    if (const HRESULT result = registrar.Open(path); FAILED(result)) {
        return result;
    }
    HRESULT failure = S_OK;
    for (const ClassRow& row : ClassTable()) {
        const HRESULT result = RunScript(registrar, row.script, direction);
        if (FAILED(result) && direction == Registering::Register) {
            return result;
        }
        if (FAILED(result) && SUCCEEDED(failure)) {
            failure = result;
        }
    }
    return failure;
}

} // namespace

std::wstring ModuleReplacement(const std::wstring& modulePath) {
    wchar_t shortPath[MAX_PATH];
    const DWORD length = GetShortPathNameW(modulePath.c_str(), shortPath, MAX_PATH);
    const std::wstring path =
        length != 0 && length < MAX_PATH ? std::wstring(shortPath, length) : modulePath;
    std::wstring quoted;
    for (const wchar_t c : path) {
        quoted.append(c == L'\'' ? 2 : 1, c);
    }
    return quoted;
}

HRESULT Registrar::Open(const std::wstring& modulePath) {
    modulePath_ = modulePath;
    library_ = ZelBase::SystemLibrary("ATL.DLL");
    if (!library_) {
        return LastError();
    }
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClassObject = library_.Find<GetClassObject>("DllGetClassObject");
    if (!getClassObject) {
        return LastError();
    }
    ComPtr<IClassFactory> factory;
    HRESULT result =
        getClassObject(kRegistrarClass, IID_IClassFactory, reinterpret_cast<void**>(factory.Put()));
    if (SUCCEEDED(result)) {
        result = factory->CreateInstance(nullptr, kRegistrarInterface,
                                         reinterpret_cast<void**>(registrar_.Put()));
    }
    if (FAILED(result)) {
        return result;
    }
    return registrar_->AddReplacement(L"Module", ModuleReplacement(modulePath).c_str());
}

HRESULT Registrar::Run(UINT script, Registering direction) {
    return direction == Registering::Register
               ? registrar_->ResourceRegister(modulePath_.c_str(), script, L"REGISTRY")
               : registrar_->ResourceUnregister(modulePath_.c_str(), script, L"REGISTRY");
}

HRESULT RegisterModule() {
    const HRESULT result = RunScripts(Registering::Register);
    return FAILED(result) ? result : RegisterTypeLibrary();
}

HRESULT UnregisterModule() {
    const HRESULT scripts = RunScripts(Registering::Unregister);
    const HRESULT library = UnregisterTypeLibrary();
    return FAILED(scripts) ? scripts : library;
}

} // namespace tervane
