#pragma once

// The installed adapters of the NT family: the cards that the system lists, and on Windows 2000 and
// later also the network devices of the device installation, of which cards are only a part.
// Everything that concerns all adapters is read once, so that each adapter costs the same however
// many there are.

#include "platform/PlatformFamily.h"
#include "platform/adapters/DeviceApi.h"
#include "platform/adapters/StaticAdapter.h"

#include <vector>

namespace tervane {

// Cards first, in the registry's order, then the devices that are none; once `stop` is set, those
// that were found until then. `family` is one of the NT family.
std::vector<StaticAdapter> ListNtAdapters(PlatformFamily family,
                                          const DeviceApi& api = DeviceApi::System(),
                                          const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
