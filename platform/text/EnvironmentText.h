#pragma once

// Paths in the registry name folders by environment variables: "%ProgramFiles%\\...".

#include <string>

namespace tervane {

// `text` with the variables between percent signs replaced. Unknown ones stay as they are, and so
// does everything when the system cannot expand it.
std::wstring ExpandEnvironment(const std::wstring& text);

} // namespace tervane
