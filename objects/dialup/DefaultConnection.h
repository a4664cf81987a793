#pragma once

// The phone-book entry that programs dial when they need the internet, by its name. Windows XP
// keeps it with the settings of automatic dialling, older systems (and programs written for them)
// with those of remote access. Which of them count on a machine is told by their keys: a browser
// that was installed later brings the new ones to an old system.

#include "platform/registry/RegistryKey.h"

#include <string>

namespace tervane {

// "" when there is none.
std::wstring DefaultConnection(const RegistryApi& api = RegistryApi::System());

// "" for none. False when the registry refuses it; then everything is as it was.
bool SetDefaultConnection(const std::wstring& entry,
                          const RegistryApi& api = RegistryApi::System());

} // namespace tervane
