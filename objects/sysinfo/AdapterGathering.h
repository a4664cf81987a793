#pragma once

// Makes the lists that scripts ask AdapterInfo for: one object per adapter.

#include "platform/ComValues.h"

#include <atomic>
#include <optional>
#include <string_view>
#include <vector>

namespace tervane {

// The interface that a script names by its identifier, without braces and in any case; null for a
// text that names none of the adapter interfaces.
const IID* FindAdapterInterface(std::wstring_view returnType);

// An object of that interface (one that FindAdapterInterface found) for each installed or each live
// adapter, in the order of the list. Nothing when the list cannot be gathered, an object cannot be
// made, or `stop` is set meanwhile. Any thread. Throws std::bad_alloc.
std::optional<std::vector<Variant>> GatherAdapters(const IID& iid, const std::atomic<bool>& stop);

} // namespace tervane
