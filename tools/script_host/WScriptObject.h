#pragma once

// The script's `WScript`: the object of this name in Windows' cscript, with the same names,
// arguments and results.

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
    CallOutcome BindObject(const CallArguments& arguments, Variant& result);
    CallOutcome ConnectObject(const CallArguments& arguments, Variant& result);
    CallOutcome DisconnectObject(const CallArguments& arguments, Variant& result);
    CallOutcome Arguments(const CallArguments& arguments, Variant& result);
    CallOutcome StdOut(const CallArguments& arguments, Variant& result);
    CallOutcome StdErr(const CallArguments& arguments, Variant& result);
    CallOutcome StdIn(const CallArguments& arguments, Variant& result);
    CallOutcome Application(const CallArguments& arguments, Variant& result);
    CallOutcome Name(const CallArguments& arguments, Variant& result);
    CallOutcome FullName(const CallArguments& arguments, Variant& result);
    CallOutcome ScriptName(const CallArguments& arguments, Variant& result);
    CallOutcome ScriptFullName(const CallArguments& arguments, Variant& result);
    CallOutcome Path(const CallArguments& arguments, Variant& result);
    CallOutcome Version(const CallArguments& arguments, Variant& result);
    CallOutcome BuildVersion(const CallArguments& arguments, Variant& result);
    CallOutcome Interactive(const CallArguments& arguments, Variant& result);
    CallOutcome SetInteractive(const CallArguments& arguments, Variant& result);
    CallOutcome Timeout(const CallArguments& arguments, Variant& result);
    CallOutcome SetTimeout(const CallArguments& arguments, Variant& result);

    CallOutcome Connect(IUnknown* object, std::wstring prefix);
    // Answers the object, after connecting it if there is a prefix.
    CallOutcome HandOut(ComPtr<IDispatch> object, std::optional<std::wstring> prefix,
                        Variant& result);

    ScriptHost* host_; // null after Detach
    const std::wstring scriptFullName_;
    const std::wstring scriptName_;
    const ComPtr<IDispatch> arguments_;
    const ComPtr<IDispatch> stdIn_;
    const ComPtr<IDispatch> stdOut_;
    const ComPtr<IDispatch> stdErr_;
};

} // namespace tervane::scripthost
