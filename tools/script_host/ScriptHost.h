#pragma once

// Runs one script on the calling thread, from compiling it to the last release of its objects, and
// gives its WScript object what that needs: sleeping, events, and an early end.
//
// The script ends with its global code. Events that have arrived by then are still handled; then
// the objects are disconnected and the engine is closed, in this order, so that an object that
// fires while it is destroyed meets nobody.

#include "tools/script_host/events/EventConnections.h"
#include "tools/script_host/script/Interruption.h"
#include "tools/script_host/script/ScriptEnd.h"
#include "tools/script_host/script/ScriptEngine.h"
#include "tools/script_host/script/ScriptFile.h"
#include "tools/script_host/script/ScriptSite.h"
#include "tools/script_host/script/TimeLimit.h"

#include <atomic>
#include <string>
#include <vector>

namespace tervane::scripthost {

class ScriptHost {
public:
    // The exit code when the script could not be run.
    static constexpr DWORD kStartFailed = 1;

    ScriptHost();
    ScriptHost(const ScriptHost&) = delete;
    ScriptHost& operator=(const ScriptHost&) = delete;

    // Runs the script by the engine of this ProgID and returns the exit code. Does not return if
    // the script was ended early and its engine cannot be interrupted: the process ends then.
    DWORD Run(const ScriptFile& file, const std::wstring& engine,
              const std::vector<std::wstring>& arguments);

    // For the WScript object, on the script's thread:
    EventConnections& Events() noexcept { return events_; }
    ScriptEnd& End() noexcept { return end_; }
    TimeLimit& Limit() noexcept { return limit_; }
    // Whether the script shows anything by itself: what it echoes, and errors.
    bool IsInteractive() const noexcept { return interactive_; }
    void SetInteractive(bool interactive) noexcept { interactive_ = interactive; }
    // Lets events in meanwhile; returns early when the script has to end.
    void Sleep(DWORD milliseconds);
    // Call while the script waits for an answer, after its end was requested. Gives the failure to
    // answer; no statement of the script runs after it.
    HRESULT Abort() noexcept;

private:
    DWORD RunToEnd(const ScriptFile& file);
    void EndInTime();
    void CallHandler(const std::wstring& function, DISPPARAMS& arguments);

    ScriptEnd end_;
    std::atomic<bool> interactive_{true};
    ScriptEngine engine_;
    EventConnections events_;
    ComPtr<ScriptSite> site_;
    std::wstring script_; // its path
    Interruption interruption_;
    TimeLimit limit_;
};

} // namespace tervane::scripthost
