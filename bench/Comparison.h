#pragma once

// Two ways to the same result, timed against each other in one run. Machines differ and have good
// and bad moments, so only the ratio counts: the sides take turns, each turn lasts long enough to
// be measured, and the median turn of each side is compared.

#include <functional>

namespace bench {

struct Comparison {
    const char* title;
    // What the ratio of ours to theirs should not exceed; 0 if there is no such aim.
    double aim;
    // How often a side does its work in one turn.
    int repetitions;
    // Turns of each side that count; the first, which warms up, comes on top.
    int turns = 31;
};

// Runs both sides and prints one line: time of each per repetition, and their ratio. Returns the
// time of ours in microseconds.
double Compare(const Comparison& comparison, const std::function<void()>& ours,
               const std::function<void()>& theirs);

} // namespace bench
