#pragma once

// Seconds since 1970 and the local time that people read and write.

#include <cstdint>
#include <optional>
#include <string>

// As "2003-01-31 23:59:59"; "?" for a time that the system cannot tell.
std::string LocalTimeText(std::uint32_t seconds);

// A moment before `now`: "90s", "15m", "2h" or "1d" ago, "14:30" or "14:30:05" today, or
// "2003-01-31", alone or with such a time after a blank or a "T". Empty if the text is none of
// them.
std::optional<std::uint32_t> ParseMoment(std::string text, std::uint32_t now);
