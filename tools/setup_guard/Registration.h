#pragma once

// What the registry says about the library's classes.

#include <windows.h>

#include <string>

namespace setup_guard {

// Whether all classes that the type library of `library` describes are registered for the whole
// machine, in the view KEY_WOW64_32KEY or KEY_WOW64_64KEY (32-bit systems have one only), with a
// path that leads to that very file. A short name is only as good as what it leads to. If not,
// `complaint` tells the first class and where it leads.
bool LeadsTo(const std::wstring& library, REGSAM view, std::wstring& complaint);

} // namespace setup_guard
