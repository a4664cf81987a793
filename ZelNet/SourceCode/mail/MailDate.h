#pragma once

#include <chrono>
#include <string>

namespace ZelNet {

// What the Date line of a message says of a time, always in UTC: "5 Mar 2003 07:04:09 -0000 (GMT)",
// without a weekday.
std::string MailDate(std::chrono::system_clock::time_point time);

// The same for messages that the SMTP client makes up itself: "5 Mar 2003 7:4:9 UT". Nothing is
// padded and the zone is written otherwise: deliberate, it tells the two kinds apart.
std::string PlainMailDate(std::chrono::system_clock::time_point time);

} // namespace ZelNet
