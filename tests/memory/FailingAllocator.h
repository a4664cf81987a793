#pragma once

// Memory that runs out on demand. Replaces operator new of the program that it is linked into, and
// watches COM's allocator (texts, arrays) through the system's own spy interface; both are counted
// together, on all threads.

#include <string>

namespace tervane::test {

// Watches COM's allocator from now on; freed texts, which the system likes to keep for reuse,
// really are freed. False when the system refuses.
bool WatchComMemory();

// From now on allocations are counted, and the one with that number, from 1, fails; 0: none does.
void FailAllocation(long number);
// Ends that; how many allocations were counted.
long StopFailing();
// The calls that led to the allocation that failed last, as addresses for addr2line.
std::string WhereFailed();

// How many blocks are allocated and not freed.
long LiveBlocks();

} // namespace tervane::test
