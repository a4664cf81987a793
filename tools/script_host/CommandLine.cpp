#include "tools/script_host/CommandLine.h"

#include <cwchar>
#include <string_view>

namespace tervane::scripthost {

const wchar_t kUsage[] =
    L"Usage: script_host [//E:engine] [//NoLogo] script [argument...]\r\n"
    L"\r\n"
    L"Runs a JScript (.js) or VBScript (.vbs) file with a WScript object like that of cscript.\r\n"
    L"\r\n"
    L"  //E:engine  run the script by this engine, whatever its extension\r\n"
    L"  //NoLogo    accepted for cscript's sake; no banner is ever printed\r\n"
    L"  //?         show this help\r\n"
    L"\r\n"
    L"Exit codes: what WScript.Quit was given, else 0; 1 script or start-up error; 2 bad usage;\r\n"
    L"0xC000013A (-1073741510) interrupted by Ctrl+C or Ctrl+Break.\r\n";

namespace {

// False if the option is unknown.
bool ApplyOption(std::wstring_view option, CommandLine& line) {
    constexpr std::wstring_view kEngine = L"//E:";
    if (_wcsicmp(option.data(), L"//NoLogo") == 0) {
        return true;
    }
    if (option == L"//?") {
        line.help = true;
        return true;
    }
    if (option.size() > kEngine.size() &&
        _wcsnicmp(option.data(), kEngine.data(), kEngine.size()) == 0) {
        line.engine = option.substr(kEngine.size());
        return true;
    }
    return false;
}

} // namespace

std::optional<CommandLine> ParseCommandLine(std::span<wchar_t* const> words, std::wstring& error) {
    CommandLine line;
    for (const wchar_t* text : words) {
        std::wstring_view word = text;
        if (word.starts_with(L"//")) {
            if (!ApplyOption(word, line)) {
                error = L"Unknown option \"" + std::wstring(word) + L"\".";
                return std::nullopt;
            }
        } else if (line.script.empty()) {
            line.script = word;
        } else {
            line.arguments.emplace_back(word);
        }
    }
    if (line.script.empty() && !line.help) {
        error = L"No script given.";
        return std::nullopt;
    }
    return line;
}

} // namespace tervane::scripthost
