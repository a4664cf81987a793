#pragma once

// Outlook Express as a program: what its setup wrote into the registry.

#include "platform/registry/RegistryKey.h"

#include <string>

namespace tervane {

// Such as "6.0.2900.5512"; "" when it is not installed.
std::wstring OutlookExpressVersion(const RegistryApi& api = RegistryApi::System());

// The full path of the program, environment variables expanded; "" when it is not installed.
std::wstring OutlookExpressPath(const RegistryApi& api = RegistryApi::System());

} // namespace tervane
