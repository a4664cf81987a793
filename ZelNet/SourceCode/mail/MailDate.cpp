#include "ZelNet/SourceCode/mail/MailDate.h"

namespace ZelNet {
namespace {

std::string Number(long long number, std::size_t digits) {
    std::string text = std::to_string(number);
    return text.insert(0, digits > text.size() ? digits - text.size() : 0, '0');
}

// Each part of the clock has at least `digits` digits.
std::string Format(std::chrono::system_clock::time_point time, std::size_t digits) {
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    using std::chrono::days;
    using std::chrono::seconds;
    const auto day = std::chrono::floor<days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<seconds>(time - day));
    return std::to_string(static_cast<unsigned>(date.day())) + " " +
           kMonths[static_cast<unsigned>(date.month()) - 1] + " " +
           std::to_string(static_cast<int>(date.year())) + " " +
           Number(clock.hours().count(), digits) + ":" + Number(clock.minutes().count(), digits) +
           ":" + Number(clock.seconds().count(), digits);
}

} // namespace

std::string MailDate(std::chrono::system_clock::time_point time) {
    return Format(time, 2) + " -0000 (GMT)";
}

std::string PlainMailDate(std::chrono::system_clock::time_point time) {
    return Format(time, 1) + " UT";
}

} // namespace ZelNet
