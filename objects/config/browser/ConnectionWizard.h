#pragma once

// The wizard that asks for the way to the internet when the browser is first started. It does so
// for every user of its own until it is marked as completed.

#include "platform/PlatformFamily.h"
#include "platform/registry/RegistryKey.h"

namespace tervane {

// Marks the wizard as completed for all users whose registry is loaded and for those to come. On
// the 9x family every key of HKEY_USERS is a user; on the NT family those named by a security
// identifier are, without the keys beside them that only hold a user's classes. False when the
// registry refused any of them; the others are marked all the same.
bool CompleteConnectionWizard(PlatformFamily family,
                              const RegistryApi& api = RegistryApi::System());

} // namespace tervane
