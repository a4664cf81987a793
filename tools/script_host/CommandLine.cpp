#include "tools/script_host/CommandLine.h"

#include "tools/script_host/script/TimeLimit.h"

#include <cwchar>
#include <cwctype>
#include <string_view>

namespace tervane::scripthost {

const wchar_t kUsage[] =
    L"Usage: script_host [//E:engine] [//T:seconds] [//B] [//I] [//NoLogo] script [argument...]\r\n"
    L"\r\n"
    L"Runs a JScript (.js) or VBScript (.vbs) file with a WScript object like that of cscript.\r\n"
    L"\r\n"
    L"  //E:engine  run the script by this engine, whatever its extension\r\n"
    L"  //T:seconds end the script when it has run so long, at most 32767\r\n"
    L"  //B         batch mode: show neither what WScript.Echo is given nor script errors\r\n"
    L"  //I         interactive mode: show them (default)\r\n"
    L"  //NoLogo    accepted for cscript's sake; no banner is ever printed\r\n"
    L"  //?         show this help\r\n"
    L"\r\n"
    L"Exit codes: what WScript.Quit was given, else 0; 1 script or start-up error; 2 bad usage;\r\n"
    L"0xC000013A (-1073741510) interrupted by Ctrl+C or Ctrl+Break.\r\n";

namespace {

bool HasValue(std::wstring_view option, std::wstring_view name) {
    return option.size() > name.size() && _wcsnicmp(option.data(), name.data(), name.size()) == 0;
}

// `text` ends its string.
bool ParseSeconds(std::wstring_view text, unsigned& seconds) {
    wchar_t* end = nullptr;
    const unsigned long number = std::wcstoul(text.data(), &end, 10);
    seconds = number;
    return std::iswdigit(text.front()) && *end == L'\0' && number <= TimeLimit::kHighestSeconds;
}

// False if the option is unknown or its value wrong.
bool ApplyOption(std::wstring_view option, CommandLine& line) {
    if (_wcsicmp(option.data(), L"//NoLogo") == 0) {
        return true;
    }
    if (option == L"//?") {
        line.help = true;
        return true;
    }
    if (_wcsicmp(option.data(), L"//B") == 0 || _wcsicmp(option.data(), L"//I") == 0) {
        line.interactive = option.back() == L'I' || option.back() == L'i';
        return true;
    }
    if (HasValue(option, L"//E:")) {
        line.engine = option.substr(4);
        return true;
    }
    return HasValue(option, L"//T:") && ParseSeconds(option.substr(4), line.seconds);
}

} // namespace

std::optional<CommandLine> ParseCommandLine(std::span<wchar_t* const> words, std::wstring& error) {
    CommandLine line;
    for (const wchar_t* text : words) {
        std::wstring_view word = text;
        if (word.starts_with(L"//")) {
            if (!ApplyOption(word, line)) {
                error = L"Unknown or wrong option \"" + std::wstring(word) + L"\".";
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
