#pragma once

// One Active Scripting engine, from its creation to its end. Belongs to the thread that made it,
// except for Interrupt.

#include "ZelBase/threads/CriticalSection.h"
#include "platform/ComValues.h"

#include <activscp.h>

#include <initializer_list>
#include <string>

namespace tervane::scripthost {

class ScriptEngine {
public:
    // The failure of a call whose error has been told to the site.
    static constexpr HRESULT kReported = static_cast<HRESULT>(SCRIPT_E_REPORTED);

    ScriptEngine() = default;
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;
    ~ScriptEngine() { Close(); }

    // Creates the engine registered as `progId` and binds it to its site, from which it
    // asks for these items. Call once; a failure code if there is no such engine.
    HRESULT Open(const std::wstring& progId, IActiveScriptSite* site,
                 std::initializer_list<const wchar_t*> items);
    // Compiles the script and runs its global code. Errors in the script are told to the site and
    // answered with kReported or success; other codes were told to nobody.
    HRESULT Run(const std::wstring& text);
    // Calls a global function. S_FALSE if the script has none of that name; kReported if an
    // error was told to the site; else the failure code of the call, with its details in
    // `exception`, whose texts the caller frees.
    HRESULT Call(const std::wstring& function, DISPPARAMS& arguments, EXCEPINFO& exception);
    // Asks the engine to stop the script at its next step; any thread, never waits. False if the
    // engine cannot do that, or is not open.
    bool Interrupt() noexcept;
    // Stops the engine and releases all objects that the script holds.
    void Close() noexcept;

private:
    ComPtr<IActiveScriptParse> parser_;
    ZelBase::CriticalSection
        mutex_; // guards `engine_` against Interrupt while it is set and taken away
    ComPtr<IActiveScript> engine_;
};

} // namespace tervane::scripthost
