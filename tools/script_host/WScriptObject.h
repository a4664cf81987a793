#pragma once

// The script's `WScript`: the part of the object of this name in Windows' cscript that example
// scripts need, with the same names, arguments and results.

#include "tools/script_host/NamedDispatch.h"
#include "tools/script_host/script/ScriptFile.h"

#include <string>
#include <vector>

namespace tervane::scripthost {

class ScriptHost;

class WScriptObject : public NamedDispatch<WScriptObject> {
public:
    static constexpr const wchar_t* kName = L"WScript";
    static std::span<const Member> Members();

    WScriptObject(ScriptHost& host, const ScriptFile& file,
                  const std::vector<std::wstring>& arguments);

    // Whoever keeps this object beyond the script's end gets failures from now on.
    void Detach() noexcept { host_ = nullptr; }

    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

private:
    CallOutcome Echo(const CallArguments& arguments, Variant& result);
    CallOutcome Sleep(const CallArguments& arguments, Variant& result);
    CallOutcome Quit(const CallArguments& arguments, Variant& result);
    CallOutcome CreateObject(const CallArguments& arguments, Variant& result);
    CallOutcome ConnectObject(const CallArguments& arguments, Variant& result);
    CallOutcome DisconnectObject(const CallArguments& arguments, Variant& result);
    CallOutcome Arguments(const CallArguments& arguments, Variant& result);
    CallOutcome StdOut(const CallArguments& arguments, Variant& result);
    CallOutcome StdErr(const CallArguments& arguments, Variant& result);
    CallOutcome Name(const CallArguments& arguments, Variant& result);
    CallOutcome FullName(const CallArguments& arguments, Variant& result);
    CallOutcome ScriptName(const CallArguments& arguments, Variant& result);
    CallOutcome ScriptFullName(const CallArguments& arguments, Variant& result);
    CallOutcome Interactive(const CallArguments& arguments, Variant& result);

    CallOutcome Connect(IUnknown* object, std::wstring prefix);

    ScriptHost* host_; // null after Detach
    const std::wstring scriptFullName_;
    const std::wstring scriptName_;
    const ComPtr<IDispatch> arguments_;
    const ComPtr<IDispatch> stdOut_;
    const ComPtr<IDispatch> stdErr_;
};

} // namespace tervane::scripthost
