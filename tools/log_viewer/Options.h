#pragma once

// What the user asked the log viewer for.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct Options {
    bool follow = false;
    std::vector<std::string> components; // empty: all
    std::uint32_t highestLevel = 255;
    std::uint32_t count = 0; // stop after so many records; 0: never
};

// From the arguments without the program's name; empty when they make no sense.
std::optional<Options> ParseOptions(const std::vector<std::string>& arguments);
