#pragma once

#include "ZelNet/SourceCode/mail/PopStatus.h"
#include "ZelNet/SourceCode/mail/SmtpStatus.h"

#include <optional>
#include <string_view>

namespace tervane {

// What scripts read in StatusCode; "SMTP_UNKNOWN_ERROR" for a number that is no status.
std::wstring_view NameOf(ZelNet::SmtpStatus status);

// What scripts read in LastError; nothing for a number that is no status.
std::optional<std::wstring_view> NameOf(ZelNet::PopStatus status);
inline constexpr std::wstring_view kUnknownPopStatus = L"POP_UNABLE_TO_DETERMINE_ERROR";

} // namespace tervane
