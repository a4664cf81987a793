#pragma once

// What the user asked the log viewer for.

#include "tools/log_viewer/RecordFilter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct Options {
    bool help = false;
    bool follow = false;
    bool json = false;
    bool plain = false; // no colours
    RecordFilter filter;
    std::uint32_t count = 0; // stop after so many records; 0: never
    std::wstring file;       // gets what is shown, too; empty: none
};

// From the arguments without the program's name; empty when they make no sense. `now`: seconds
// since 1970.
std::optional<Options> ParseOptions(const std::vector<std::wstring>& arguments, std::uint32_t now);
