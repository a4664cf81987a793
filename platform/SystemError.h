#pragma once

// The system's own words for its error numbers.

#include <windows.h>

#include <string>

namespace tervane {

// One line in the user's language; "" for 0 and for a number that the system has no text for.
std::wstring SystemErrorText(DWORD error);

} // namespace tervane
