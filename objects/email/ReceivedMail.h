#pragma once

// From the lines of a retrieved message to a message object for the script. Nothing is decoded: the
// script gets header lines and body as they were received, folded headers line by line.

#include "platform/ComValues.h"

#include <TERVANELib.h>

#include <string>
#include <vector>

namespace tervane {

// A new EmailData with the lines up to the first empty one as headers and the others, joined by
// CR LF, as TextMessage. Null when it cannot be made.
ComPtr<IEmailData> MakeReceivedMail(std::vector<std::string> lines);

} // namespace tervane
