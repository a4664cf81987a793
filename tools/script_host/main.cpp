// A console program that runs JScript and VBScript files as Windows' cscript does, events included.

#include "tools/script_host/CommandLine.h"
#include "tools/script_host/Console.h"
#include "tools/script_host/ErrorText.h"
#include "tools/script_host/ScriptHost.h"
#include "tools/script_host/script/ScriptFile.h"

#include <windows.h>

#include <objbase.h>

namespace {

using namespace tervane::scripthost;

constexpr int kBadUsage = 2;

// The single-threaded apartment that script engines need.
class Apartment {
public:
    Apartment() noexcept : result_(CoInitialize(nullptr)) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }
    HRESULT Result() const noexcept { return result_; }

private:
    const HRESULT result_;
};

DWORD Fail(const std::wstring& message) {
    Console::WriteLine(Console::Stream::kError, message);
    return ScriptHost::kStartFailed;
}

DWORD RunScript(const CommandLine& line) {
    std::wstring error;
    std::optional<ScriptFile> file = ScriptFile::Load(line.script, error);
    if (!file) {
        return Fail(error);
    }
    std::wstring engine =
        line.engine.empty() ? std::wstring(file->EngineByExtension()) : line.engine;
    if (engine.empty()) {
        return Fail(L"No script engine is known for \"" + std::wstring(file->Name()) +
                    L"\"; name one with //E:.");
    }
    Apartment apartment;
    if (FAILED(apartment.Result())) {
        return Fail(L"Cannot start COM: " + ErrorText(apartment.Result()));
    }
    ScriptHost host;
    host.SetInteractive(line.interactive);
    if (!host.Limit().Set(line.seconds)) {
        return Fail(L"The system is out of resources.");
    }
    return host.Run(*file, engine, line.arguments);
}

} // namespace

int wmain(int count, wchar_t** words) {
    std::wstring error;
    std::optional<CommandLine> line =
        ParseCommandLine({words + 1, static_cast<std::size_t>(count > 0 ? count - 1 : 0)}, error);
    if (!line) {
        Console::WriteLine(Console::Stream::kError, error);
        Console::Write(Console::Stream::kError, kUsage);
        return kBadUsage;
    }
    if (line->help) {
        Console::Write(Console::Stream::kOut, kUsage);
        return 0;
    }
    return static_cast<int>(RunScript(*line));
}
