#pragma once

// What the user asked for: host options begin with two slashes and may stand anywhere, the first
// other word is the script, the rest is the script's own.

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tervane::scripthost {

struct CommandLine {
    bool help = false;
    bool interactive = true;
    unsigned seconds = 0; // that the script may run; 0: as long as it likes
    // ProgID of the script engine; empty means: by the script's extension.
    std::wstring engine;
    std::wstring script;
    std::vector<std::wstring> arguments;
};

// `words` are those after the program's own name. nullopt, with a reason in `error`, for an unknown
// or wrong option or a missing script.
std::optional<CommandLine> ParseCommandLine(std::span<wchar_t* const> words, std::wstring& error);

// The help text, lines ended by "\r\n".
extern const wchar_t kUsage[];

} // namespace tervane::scripthost
