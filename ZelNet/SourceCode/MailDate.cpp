#include "ZelNet/SourceCode/MailDate.h"

#include <cstdio>

namespace ZelNet {
namespace {

// `format` gets day, month, year, hour, minute, second.
std::string Format(const char* format, std::chrono::system_clock::time_point time) {
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    using std::chrono::days;
    using std::chrono::seconds;
    const auto day = std::chrono::floor<days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<seconds>(time - day));
    char text[64];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(date.day()),
                  kMonths[static_cast<unsigned>(date.month()) - 1], static_cast<int>(date.year()),
                  static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

} // namespace

std::string MailDate(std::chrono::system_clock::time_point time) {
    return Format("%u %s %d %02d:%02d:%02d -0000 (GMT)", time);
}

std::string PlainMailDate(std::chrono::system_clock::time_point time) {
    return Format("%u %s %d %d:%d:%d UT", time);
}

} // namespace ZelNet
