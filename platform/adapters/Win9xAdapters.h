#pragma once

// The installed adapters of the 9x family: the devices of class "Net" in the device tree, each with
// a class key for its driver and, where TCP/IP is bound to it, one for its addresses. What concerns
// all adapters is read once, so that each adapter costs the same however many there are. Drivers of
// this family cannot be asked for hardware addresses.

#include "platform/adapters/StaticAdapter.h"

#include <vector>

namespace tervane {

// In the order of the device tree; once `stop` is set, those that were found until then.
std::vector<StaticAdapter> List9xAdapters(const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
