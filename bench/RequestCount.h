#pragma once

// The work whose system calls scripts/steps/count-requests counts in the trace of Wine's server.
// Each piece is done once before it counts, and stands between two marks.

#include <cstddef>
#include <string>

namespace bench {

// Begins, with `what`, or ends, with the empty text, what is counted: all requests of this process
// from here on, divided by `units`.
void MarkRequests(const std::string& what, size_t units = 1);

} // namespace bench
