#include "tools/script_host/WScriptObject.h"

#include "ZelBase/SystemLibrary.h"
#include "tools/script_host/Console.h"
#include "tools/script_host/ErrorText.h"
#include "tools/script_host/InputStream.h"
#include "tools/script_host/ObjectBinding.h"
#include "tools/script_host/ScriptHost.h"
#include "tools/script_host/TextStream.h"
#include "tools/script_host/script/ScriptArguments.h"

#include <olectl.h>

namespace tervane::scripthost {
namespace {

CallOutcome ReturnText(std::wstring_view text, Variant& result) {
    std::optional<Variant> value = Variant::FromText(text);
    if (!value) {
        return {E_OUTOFMEMORY, {}};
    }
    result = *std::move(value);
    return {};
}

CallOutcome ReturnObject(IDispatch* object, Variant& result) {
    result = Variant::FromObject(AddReference(object));
    return {};
}

CallOutcome BadArgument(const wchar_t* what) {
    return {E_INVALIDARG, what};
}

} // namespace

std::span<const WScriptObject::Member> WScriptObject::Members() {
    using Self = WScriptObject;
    static constexpr Member kMembers[] = {
        {L"Name", DISPID_VALUE, kProperty, &Self::Name},
        {L"Echo", 1, kMethod, &Self::Echo},
        {L"Sleep", 2, kMethod, &Self::Sleep},
        {L"Quit", 3, kMethod, &Self::Quit},
        {L"CreateObject", 4, kMethod, &Self::CreateObject},
        {L"ConnectObject", 5, kMethod, &Self::ConnectObject},
        {L"DisconnectObject", 6, kMethod, &Self::DisconnectObject},
        {L"Arguments", 7, kProperty, &Self::Arguments},
        {L"StdOut", 8, kProperty, &Self::StdOut},
        {L"StdErr", 9, kProperty, &Self::StdErr},
        {L"FullName", 10, kProperty, &Self::FullName},
        {L"ScriptName", 11, kProperty, &Self::ScriptName},
        {L"ScriptFullName", 12, kProperty, &Self::ScriptFullName},
        {L"Interactive", 13, kProperty, &Self::Interactive},
        {L"Interactive", 13, kAssignment, &Self::SetInteractive},
        {L"GetObject", 14, kMethod, &Self::BindObject},
        {L"StdIn", 15, kProperty, &Self::StdIn},
        {L"Application", 16, kProperty, &Self::Application},
        {L"Path", 17, kProperty, &Self::Path},
        {L"Version", 18, kProperty, &Self::Version},
        {L"BuildVersion", 19, kProperty, &Self::BuildVersion},
        {L"Timeout", 20, kProperty, &Self::Timeout},
        {L"Timeout", 20, kAssignment, &Self::SetTimeout},
    };
    return kMembers;
}

WScriptObject::WScriptObject(ScriptHost& host, const ScriptFile& file,
                             const std::vector<std::wstring>& arguments)
    : host_(&host), scriptFullName_(file.FullPath()), scriptName_(file.Name()),
      arguments_(new ScriptArguments(arguments)), stdIn_(new InputStream),
      stdOut_(new TextStream(Console::Stream::kOut)),
      stdErr_(new TextStream(Console::Stream::kError)) {}

// Every call is an occasion to stop a script that has to end.
HRESULT WScriptObject::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                              DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                              UINT* badArgument) {
    if (host_ == nullptr) {
        return RPC_E_DISCONNECTED;
    }
    HRESULT outcome = E_ABORT;
    if (!host_->End().IsRequested()) {
        outcome = NamedDispatch::Invoke(id, iid, locale, flags, parameters, result, exception,
                                        badArgument);
    }
    return host_->End().IsRequested() ? host_->Abort() : outcome;
}

CallOutcome WScriptObject::Echo(const CallArguments& arguments, Variant&) {
    std::wstring line;
    for (unsigned i = 0; i < arguments.Count(); ++i) {
        std::optional<std::wstring> text = arguments.Text(i);
        if (!text) {
            return {DISP_E_TYPEMISMATCH, L"A value has no text form."};
        }
        line += (i == 0 ? L"" : L" ") + *text;
    }
    return {host_->IsInteractive() ? Console::WriteLine(Console::Stream::kOut, line) : S_OK, {}};
}

CallOutcome WScriptObject::Sleep(const CallArguments& arguments, Variant&) {
    std::optional<LONG> milliseconds = arguments.Number(0);
    if (arguments.Count() != 1 || !milliseconds || *milliseconds < 0) {
        return BadArgument(L"A time in milliseconds is needed.");
    }
    host_->Sleep(static_cast<DWORD>(*milliseconds));
    return {};
}

CallOutcome WScriptObject::Quit(const CallArguments& arguments, Variant&) {
    std::optional<LONG> exitCode = arguments.Number(0);
    if (arguments.Count() > 1 || (arguments.Has(0) && !exitCode)) {
        return BadArgument(L"The exit code must be a number.");
    }
    host_->End().Request(static_cast<DWORD>(exitCode.value_or(0)));
    return {};
}

CallOutcome WScriptObject::CreateObject(const CallArguments& arguments, Variant& result) {
    std::optional<std::wstring> progId = arguments.Text(0);
    std::optional<std::wstring> prefix = arguments.Text(1);
    if (!progId || arguments.Count() > 2 || (arguments.Has(1) && !prefix)) {
        return BadArgument(L"A ProgID and at most an event prefix are needed.");
    }
    ComPtr<IDispatch> object;
    CallOutcome created = CreateByProgId(*progId, object);
    return FAILED(created.code) ? created : HandOut(std::move(object), std::move(prefix), result);
}

CallOutcome WScriptObject::BindObject(const CallArguments& arguments, Variant& result) {
    std::optional<std::wstring> path = arguments.Text(0);
    std::optional<std::wstring> progId = arguments.Text(1);
    std::optional<std::wstring> prefix = arguments.Text(2);
    if ((!path && !progId) || arguments.Count() > 3 || (arguments.Has(0) && !path) ||
        (arguments.Has(1) && !progId) || (arguments.Has(2) && !prefix)) {
        return BadArgument(L"A path or name, a ProgID, or both are needed.");
    }
    ComPtr<IDispatch> object;
    CallOutcome bound = BindByName(path, progId.value_or(L""), object);
    return FAILED(bound.code) ? bound : HandOut(std::move(object), std::move(prefix), result);
}

CallOutcome WScriptObject::HandOut(ComPtr<IDispatch> object, std::optional<std::wstring> prefix,
                                   Variant& result) {
    if (prefix && !prefix->empty()) {
        CallOutcome connected = Connect(object.Get(), *std::move(prefix));
        if (FAILED(connected.code)) {
            return connected;
        }
    }
    result = Variant::FromObject(std::move(object));
    return {};
}

CallOutcome WScriptObject::ConnectObject(const CallArguments& arguments, Variant&) {
    ComPtr<IDispatch> object = arguments.Object(0);
    std::optional<std::wstring> prefix = arguments.Text(1);
    if (!object || !prefix || arguments.Count() != 2) {
        return BadArgument(L"An object and an event prefix are needed.");
    }
    return Connect(object.Get(), *std::move(prefix));
}

CallOutcome WScriptObject::Connect(IUnknown* object, std::wstring prefix) {
    HRESULT code = host_->Events().Connect(object, std::move(prefix));
    if (code == CONNECT_E_NOCONNECTION) {
        return {code, L"Could not connect object: it describes no events."};
    }
    if (FAILED(code)) {
        return {code, L"Could not connect object: " + ErrorText(code)};
    }
    return {};
}

CallOutcome WScriptObject::DisconnectObject(const CallArguments& arguments, Variant&) {
    ComPtr<IDispatch> object = arguments.Object(0);
    if (!object || arguments.Count() != 1) {
        return BadArgument(L"An object is needed.");
    }
    host_->Events().Disconnect(object.Get());
    return {};
}

// With arguments it stands for the collection's default member: WScript.Arguments(0).
CallOutcome WScriptObject::Arguments(const CallArguments& arguments, Variant& result) {
    if (arguments.Count() == 0) {
        return ReturnObject(arguments_.Get(), result);
    }
    return static_cast<ScriptArguments*>(arguments_.Get())->Item(arguments, result);
}

CallOutcome WScriptObject::StdOut(const CallArguments&, Variant& result) {
    return ReturnObject(stdOut_.Get(), result);
}

CallOutcome WScriptObject::StdErr(const CallArguments&, Variant& result) {
    return ReturnObject(stdErr_.Get(), result);
}

// The same as in cscript, where scripts ask for it in messages only.
CallOutcome WScriptObject::Name(const CallArguments&, Variant& result) {
    return ReturnText(L"Windows Script Host", result);
}

CallOutcome WScriptObject::FullName(const CallArguments&, Variant& result) {
    return ReturnText(ZelBase::ModulePath(nullptr), result);
}

CallOutcome WScriptObject::ScriptName(const CallArguments&, Variant& result) {
    return ReturnText(scriptName_, result);
}

CallOutcome WScriptObject::ScriptFullName(const CallArguments&, Variant& result) {
    return ReturnText(scriptFullName_, result);
}

CallOutcome WScriptObject::StdIn(const CallArguments&, Variant& result) {
    return ReturnObject(stdIn_.Get(), result);
}

CallOutcome WScriptObject::Application(const CallArguments&, Variant& result) {
    return ReturnObject(this, result);
}

// The folder of the host.
CallOutcome WScriptObject::Path(const CallArguments&, Variant& result) {
    const std::wstring host = ZelBase::ModulePath(nullptr);
    return ReturnText(host.substr(0, host.find_last_of(L'\\')), result);
}

// Of the cscript whose members these are; scripts ask whether they are there.
CallOutcome WScriptObject::Version(const CallArguments&, Variant& result) {
    return ReturnText(L"5.8", result);
}

CallOutcome WScriptObject::BuildVersion(const CallArguments&, Variant& result) {
    result = Variant::FromLong(0);
    return {};
}

CallOutcome WScriptObject::Interactive(const CallArguments&, Variant& result) {
    result = Variant::FromBool(host_->IsInteractive());
    return {};
}

CallOutcome WScriptObject::SetInteractive(const CallArguments& arguments, Variant&) {
    const std::optional<LONG> truth = arguments.Number(0);
    if (!truth) {
        return BadArgument(L"True or false is needed.");
    }
    host_->SetInteractive(*truth != 0);
    return {};
}

CallOutcome WScriptObject::Timeout(const CallArguments&, Variant& result) {
    result = Variant::FromLong(static_cast<LONG>(host_->Limit().Seconds()));
    return {};
}

CallOutcome WScriptObject::SetTimeout(const CallArguments& arguments, Variant&) {
    const std::optional<LONG> seconds = arguments.Number(0);
    if (!seconds || *seconds < 0 || static_cast<DWORD>(*seconds) > TimeLimit::kHighestSeconds) {
        return BadArgument(L"A time of at most 32767 seconds is needed.");
    }
    return {host_->Limit().Set(static_cast<DWORD>(*seconds)) ? S_OK : E_OUTOFMEMORY, {}};
}

} // namespace tervane::scripthost
