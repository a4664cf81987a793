#pragma once

// From the lines of a retrieved message to a message object for the script. Nothing is decoded: the
// script gets header lines and body as they were received, folded headers line by line.

#include "platform/ComValues.h"

#include <TERVANELib.h>

#include <string>

namespace tervane {

// A new EmailData of a text each of whose lines ends with LF: the lines up to the first empty one
// are the headers, the others, joined by CR LF, TextMessage. Null when it cannot be made.
ComPtr<IEmailData> MakeReceivedMail(std::string text);

} // namespace tervane
