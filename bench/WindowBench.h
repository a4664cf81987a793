#pragma once

namespace bench {

// Searches among 500 windows, and 20 below each, against the bare loops.
void CompareWindowSearch();
// Counts the requests of a search for each window without a title; see RequestCount.h.
void CountWindowSearch();

} // namespace bench
