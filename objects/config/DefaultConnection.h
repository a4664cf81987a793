#pragma once

// The phone-book entry that programs dial when they need the internet, by its name. Windows XP
// keeps it with the settings of automatic dialling, older systems (and programs written for them)
// with those of remote access.

#include "platform/PlatformFamily.h"
#include "platform/RegistryApi.h"

#include <string>

namespace tervane {

// "" when there is none.
std::wstring DefaultConnection(PlatformFamily family,
                               const RegistryApi& api = RegistryApi::System());

// "" for none. False when the registry refuses it; then everything is as it was.
bool SetDefaultConnection(PlatformFamily family, const std::wstring& entry,
                          const RegistryApi& api = RegistryApi::System());

} // namespace tervane
