#include "tools/script_host/ScriptHost.h"

#include "tools/script_host/Console.h"
#include "tools/script_host/ErrorText.h"
#include "tools/script_host/WScriptObject.h"
#include "tools/script_host/events/MessagePump.h"

namespace tervane::scripthost {

ScriptHost::ScriptHost()
    : events_([this](const std::wstring& function, DISPPARAMS& arguments) {
          CallHandler(function, arguments);
      }),
      interruption_([this] {
          end_.Request(Interruption::kExitCode);
          engine_.Interrupt();
      }),
      limit_([this] { EndInTime(); }) {}

DWORD ScriptHost::Run(const ScriptFile& file, const std::wstring& engine,
                      const std::vector<std::wstring>& arguments) {
    if (end_.Signal() == nullptr || !events_.IsOpen()) {
        Console::WriteLine(Console::Stream::kError, L"The system is out of resources.");
        return kStartFailed;
    }
    script_ = file.FullPath();
    ComPtr<WScriptObject> wscript(new WScriptObject(*this, file, arguments));
    site_.Reset(new ScriptSite(file.FullPath(), AddReference<IDispatch>(wscript.Get()), end_,
                               interactive_));
    HRESULT opened =
        engine_.Open(engine, site_.Get(), {ScriptSite::kItemName, ScriptSite::kShortName});
    if (FAILED(opened)) {
        Console::WriteLine(Console::Stream::kError,
                           L"Cannot start script engine \"" + engine + L"\": " + ErrorText(opened));
        return kStartFailed;
    }
    DWORD exitCode = RunToEnd(file);
    wscript->Detach();
    return exitCode;
}

DWORD ScriptHost::RunToEnd(const ScriptFile& file) {
    HRESULT result = engine_.Run(file.Text());
    if (FAILED(result) && result != ScriptEngine::kReported) {
        EXCEPINFO none{};
        site_->ReportCallError(result, none);
    }
    if (!end_.IsRequested()) {
        Sleep(0);
        events_.HandleArrived();
    }
    events_.Close();
    engine_.Close();
    return end_.ExitCode();
}

void ScriptHost::Sleep(DWORD milliseconds) {
    PumpMessages(milliseconds, end_.Signal());
}

// On the timer's thread.
void ScriptHost::EndInTime() {
    if (!end_.IsRequested() && interactive_) {
        Console::WriteLine(Console::Stream::kError,
                           script_ + L" Script error: the script ran out of its time.");
    }
    end_.Request(TimeLimit::kExitCode);
    engine_.Interrupt();
}

void ScriptHost::CallHandler(const std::wstring& function, DISPPARAMS& arguments) {
    if (end_.IsRequested()) {
        return;
    }
    EXCEPINFO exception{};
    HRESULT result = engine_.Call(function, arguments, exception);
    if (FAILED(result) && result != ScriptEngine::kReported) {
        site_->ReportCallError(result, exception);
    }
}

HRESULT ScriptHost::Abort() noexcept {
    if (engine_.Interrupt()) {
        return E_ABORT;
    }
    // A script could catch any failure and go on, so there is no way back into this engine.
    events_.Close();
    ExitProcess(end_.ExitCode());
}

} // namespace tervane::scripthost
