#pragma once

#include "ZelNet/SourceCode/mail/AMIME.h"

#include <chrono>
#include <memory>

namespace ZelNet {

// The simplest message that says who wrote what to whom: a plain text, sent as it stands.
std::unique_ptr<AMIME> MakePlainMessage(const std::string& from, const std::string& to,
                                        const std::string& subject, const std::string& body,
                                        std::chrono::system_clock::time_point date);

} // namespace ZelNet
