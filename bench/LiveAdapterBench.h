#pragma once

namespace bench {

// The list of this machine's live adapters by either of its sources against each other and against
// what they stand on, and what an adapter costs when there are many.
void CompareLiveAdapters();

} // namespace bench
