#pragma once

// The work whose system calls scripts/steps/count-requests counts in the trace of Wine's server.
// Each piece is done once before it counts, and stands between two marks.

#include <cstddef>
#include <string>

namespace bench {

// What is counted: all requests of this process, divided by `units`.
struct Counted {
    std::string what;
    std::size_t units = 1;
    // What there should be at most, of requests and of openings of the log ring; a negative number
    // if there is no such goal.
    double most = -1;
    double mostRings = -1;
    // Whether this is what `what` is compared with.
    bool isTheirs = false;
};

// From here on counts what is given, or nothing any more.
void MarkRequests(const Counted& work);
void MarkEndOfRequests();

} // namespace bench
