#include "tools/log_viewer/LocalTime.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace {

constexpr std::pair<char, std::uint32_t> kUnits[] = {
    {'s', 1}, {'m', 60}, {'h', 60 * 60}, {'d', 24 * 60 * 60}};

std::tm Broken(std::uint32_t seconds) {
    const __time64_t time = seconds;
    const std::tm* parts = _localtime64(&time);
    return parts ? *parts : std::tm{};
}

// True if the whole text has this form, which ends with "%n".
template <typename... Numbers>
bool Has(const std::string& text, const char* form, Numbers*... numbers) {
    int used = 0;
    return std::sscanf(text.c_str(), form, numbers..., &used) ==
               static_cast<int>(sizeof...(numbers)) &&
           static_cast<std::size_t>(used) == text.size();
}

std::optional<std::uint32_t> Ago(const std::string& text, std::uint32_t now) {
    for (const auto& [letter, length] : kUnits) {
        const char form[] = {'%', '9', 'u', letter, '%', 'n', '\0'};
        unsigned count = 0;
        if (text.front() != '-' && Has(text, form, &count)) {
            const std::uint64_t passed = std::uint64_t{count} * length;
            return passed < now ? static_cast<std::uint32_t>(now - passed) : 0;
        }
    }
    return std::nullopt;
}

// Midnight today or of the date at the text's beginning, which is cut off with the blank after it.
std::optional<std::tm> TakeDay(std::string& text, std::uint32_t now) {
    std::tm day = Broken(now);
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    const std::size_t end = std::string_view("2003-01-31").size();
    const std::string date = text.substr(0, end);
    if (date.find('-') == std::string::npos) {
        return day;
    }
    if (!Has(date, "%4d-%2d-%2d%n", &day.tm_year, &day.tm_mon, &day.tm_mday)) {
        return std::nullopt;
    }
    day.tm_year -= 1900;
    --day.tm_mon;
    text.erase(0, end);
    if (!text.empty()) {
        if ((text[0] != ' ' && text[0] != 'T') || text.size() == 1) {
            return std::nullopt;
        }
        text.erase(0, 1);
    }
    return day;
}

} // namespace

std::string LocalTimeText(std::uint32_t seconds) {
    const std::tm parts = Broken(seconds);
    char text[32];
    return parts.tm_mday != 0 && std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts) != 0
               ? text
               : "?";
}

std::optional<std::uint32_t> ParseMoment(std::string text, std::uint32_t now) {
    if (text.empty()) {
        return std::nullopt;
    }
    if (const auto ago = Ago(text, now)) {
        return ago;
    }
    std::optional<std::tm> moment = TakeDay(text, now);
    if (!moment ||
        (!text.empty() && !Has(text, "%2d:%2d%n", &moment->tm_hour, &moment->tm_min) &&
         !Has(text, "%2d:%2d:%2d%n", &moment->tm_hour, &moment->tm_min, &moment->tm_sec))) {
        return std::nullopt;
    }
    moment->tm_isdst = -1;
    std::tm real = *moment;
    const __time64_t seconds = _mktime64(&real);
    // There is no 25:00 and no 31st of April.
    const bool isReal = real.tm_mon == moment->tm_mon && real.tm_mday == moment->tm_mday &&
                        real.tm_min == moment->tm_min && real.tm_sec == moment->tm_sec;
    if (!isReal || seconds < 0 || seconds > UINT32_MAX) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(seconds);
}
