#pragma once

// Which records the user asked for.

#include "ZelBase/log/LogLayout.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A field as text; other processes wrote it, so its end is not taken on trust.
template <std::size_t Size>
std::string_view FieldText(const char (&field)[Size]) {
    const std::string_view all(field, Size);
    return all.substr(0, all.find('\0'));
}

// Of each list one entry must fit, and an empty one asks for nothing. Upper and lower case of ASCII
// letters are the same.
struct RecordFilter {
    std::vector<std::string> components;
    std::vector<std::string> functions;
    std::vector<std::string> processes; // as records name them: "0x1a4"
    std::vector<std::string> texts;     // parts of the record's text
    std::uint32_t highestLevel = 255;
    std::uint32_t since = 0; // seconds since 1970

    bool IsWanted(const ZelBase::LogRecord& record) const;
};
