#pragma once

#include <windows.h>

#include <string>

namespace tervane::scripthost {

// The system's words for a failure code, without a line end; the code in hexadecimal digits where
// the system has no words.
std::wstring ErrorText(HRESULT code);

} // namespace tervane::scripthost
