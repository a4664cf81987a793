#include "tools/script_host/script/ScriptSite.h"

#include "component/ComEdge.h"
#include "tools/script_host/Console.h"
#include "tools/script_host/ErrorText.h"

#include <cwchar>

namespace tervane::scripthost {

HRESULT ScriptSite::GetLCID(LCID* locale) {
    if (locale == nullptr) {
        return E_POINTER;
    }
    *locale = GetUserDefaultLCID();
    return S_OK;
}

HRESULT ScriptSite::GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item, ITypeInfo** type) {
    if (name == nullptr || (_wcsicmp(name, kItemName) != 0 && _wcsicmp(name, kShortName) != 0)) {
        return TYPE_E_ELEMENTNOTFOUND;
    }
    if ((wanted & SCRIPTINFO_ITYPEINFO) != 0 && type != nullptr) {
        *type = nullptr;
    }
    if ((wanted & SCRIPTINFO_IUNKNOWN) != 0) {
        if (item == nullptr) {
            return E_POINTER;
        }
        *item = AddReference<IUnknown>(item_.Get()).Release();
    }
    return S_OK;
}

HRESULT ScriptSite::GetDocVersionString(BSTR*) {
    return E_NOTIMPL;
}

HRESULT ScriptSite::OnScriptError(IActiveScriptError* error) {
    if (error == nullptr) {
        return E_POINTER;
    }
    return Guarded([&] {
        EXCEPINFO exception{};
        error->GetExceptionInfo(&exception);
        DWORD context = 0;
        ULONG line = 0;
        LONG column = 0;
        std::wstring place = file_;
        // Both count from 0, people from 1.
        if (SUCCEEDED(error->GetSourcePosition(&context, &line, &column))) {
            place += L"(" + std::to_wstring(line + 1) + L", " + std::to_wstring(column + 1) + L")";
        }
        Report(place, exception.scode, exception);
        return S_OK;
    });
}

void ScriptSite::ReportCallError(HRESULT code, EXCEPINFO& exception) {
    Report(file_, code == DISP_E_EXCEPTION ? exception.scode : code, exception);
}

void ScriptSite::Report(const std::wstring& place, HRESULT code, EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn != nullptr) {
        exception.pfnDeferredFillIn(&exception);
    }
    UniqueBstr source(exception.bstrSource);
    UniqueBstr description(exception.bstrDescription);
    UniqueBstr help(exception.bstrHelpFile);
    // Once the script has to end, its engine may call the way it is stopped an error.
    if (end_.IsRequested()) {
        return;
    }
    std::wstring message = place + L" ";
    message += TextOf(source.Get()).empty() ? L"Script error" : TextOf(source.Get());
    message += L": ";
    message += TextOf(description.Get()).empty() ? ErrorText(code) : TextOf(description.Get());
    if (interactive_) {
        Console::WriteLine(Console::Stream::kError, message);
    }
    end_.Request(kErrorExitCode);
}

HRESULT ScriptSite::GetWindow(HWND* window) {
    if (window == nullptr) {
        return E_POINTER;
    }
    *window = nullptr;
    return S_OK;
}

HRESULT ScriptSite::QueryService(REFGUID, REFIID, void** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

} // namespace tervane::scripthost
