#pragma once

// The engine's view of its host: hands out the WScript object and takes the errors that no script
// code caught. Such an error is printed as
//     file(line, column) source: description
// and ends the script with exit code 1, wherever it happened: in the text itself, in its global
// code or in an event handler.

#include "tools/script_host/ComBase.h"
#include "tools/script_host/script/ScriptEnd.h"

#include "platform/ComValues.h"

#include <activscp.h>
#include <servprov.h>

#include <atomic>
#include <string>

namespace tervane::scripthost {

class ScriptSite : public ComBase<IActiveScriptSite, IActiveScriptSiteWindow, IServiceProvider> {
public:
    static constexpr wchar_t kItemName[] = L"WScript";
    static constexpr wchar_t kShortName[] = L"WSH"; // of the same object
    static constexpr DWORD kErrorExitCode = 1;

    // `file` stands in front of every message; there are none while `interactive` is false. `end`
    // and `interactive` must outlive this object.
    ScriptSite(std::wstring file, ComPtr<IDispatch> item, ScriptEnd& end,
               const std::atomic<bool>& interactive)
        : file_(std::move(file)), item_(std::move(item)), end_(end), interactive_(interactive) {}

    // An error that the engine left to its caller: `code` is the result of the call, `exception`
    // what came with it. Frees what `exception` owns.
    void ReportCallError(HRESULT code, EXCEPINFO& exception);

    // IActiveScriptSite
    STDMETHODIMP GetLCID(LCID* locale) override;
    STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item,
                             ITypeInfo** type) override;
    STDMETHODIMP GetDocVersionString(BSTR* version) override;
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) override;
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }

    // IActiveScriptSiteWindow: message boxes have no owner.
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

    // IServiceProvider: there are no services, yet some engines hand no site to an object, and then
    // no object with a site to the script, unless they can ask for one.
    STDMETHODIMP QueryService(REFGUID service, REFIID iid, void** out) override;

private:
    void Report(const std::wstring& place, HRESULT code, EXCEPINFO& exception);

    const std::wstring file_;
    const ComPtr<IDispatch> item_;
    ScriptEnd& end_;
    const std::atomic<bool>& interactive_;
};

} // namespace tervane::scripthost
