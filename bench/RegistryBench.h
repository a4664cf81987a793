#pragma once

namespace bench {

// The reading of a text against WScript.Shell.RegRead.
void CompareRegistryRead();
// Counts the requests of it, and of the bare calls; see RequestCount.h.
void CountRegistryRead();

} // namespace bench
