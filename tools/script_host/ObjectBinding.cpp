#include "tools/script_host/ObjectBinding.h"

#include "tools/script_host/ErrorText.h"

#include <objbase.h>

namespace tervane::scripthost {
namespace {

CallOutcome FindClass(const std::wstring& progId, CLSID& clsid) {
    const HRESULT code = CLSIDFromProgID(progId.c_str(), &clsid);
    if (FAILED(code)) {
        return {code, L"Could not locate automation class named \"" + progId + L"\"."};
    }
    return {};
}

CallOutcome Judge(HRESULT code, const wchar_t* what, const std::wstring& name) {
    if (FAILED(code)) {
        return {code, std::wstring(what) + L" object named \"" + name + L"\": " + ErrorText(code)};
    }
    return {};
}

CallOutcome FindRunning(const std::wstring& progId, ComPtr<IDispatch>& object) {
    CLSID clsid{};
    CallOutcome found = FindClass(progId, clsid);
    if (FAILED(found.code)) {
        return found;
    }
    ComPtr<IUnknown> running;
    const HRESULT code = GetActiveObject(clsid, nullptr, running.Put());
    if (SUCCEEDED(code)) {
        object = QueryFor<IDispatch>(running.Get());
    }
    return Judge(SUCCEEDED(code) && !object ? E_NOINTERFACE : code, L"Could not find a running",
                 progId);
}

CallOutcome LoadFile(const std::wstring& path, const std::wstring& progId,
                     ComPtr<IDispatch>& object) {
    ComPtr<IDispatch> created;
    CallOutcome outcome = CreateByProgId(progId, created);
    if (FAILED(outcome.code)) {
        return outcome;
    }
    const ComPtr<IPersistFile> file = QueryFor<IPersistFile>(created.Get());
    outcome = Judge(file ? file->Load(path.c_str(), STGM_READWRITE) : E_NOINTERFACE,
                    L"Could not load", path);
    if (SUCCEEDED(outcome.code)) {
        object = std::move(created);
    }
    return outcome;
}

} // namespace

CallOutcome CreateByProgId(const std::wstring& progId, ComPtr<IDispatch>& object) {
    CLSID clsid{};
    CallOutcome found = FindClass(progId, clsid);
    if (FAILED(found.code)) {
        return found;
    }
    return Judge(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                  __uuidof(IDispatch), reinterpret_cast<void**>(object.Put())),
                 L"Could not create", progId);
}

CallOutcome BindByName(const std::optional<std::wstring>& path, const std::wstring& progId,
                       ComPtr<IDispatch>& object) {
    if (!path) {
        return FindRunning(progId, object);
    }
    if (path->empty()) {
        return CreateByProgId(progId, object);
    }
    if (!progId.empty()) {
        return LoadFile(*path, progId, object);
    }
    return Judge(CoGetObject(path->c_str(), nullptr, __uuidof(IDispatch),
                             reinterpret_cast<void**>(object.Put())),
                 L"Could not get", *path);
}

} // namespace tervane::scripthost
