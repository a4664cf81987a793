#pragma once

// Two ways to the same result, timed against each other in one run. Machines differ and have good
// and bad moments, so only the ratio counts: the sides take turns, each turn lasts long enough to
// be measured, and the median turn of each side is compared.

#include <functional>
#include <string>
#include <string_view>

namespace bench {

// A line of the table that scripts/steps/bench-table makes of all runs.
struct Row {
    std::string what;
    double ours = 0;
    // 0 if there is nothing to compare with.
    double theirs = 0;
    std::string_view unit;
    // What the ratio, or else ours, should not exceed; a negative number if there is no such goal.
    double mostRatio = -1;
    double most = -1;
};
void PrintRow(const Row& row);

struct Comparison {
    const char* title;
    // What the ratio of ours to theirs should not exceed; a negative number if there is no such
    // goal.
    double mostRatio;
    // How often a side does its work in one turn.
    int repetitions;
    // Turns of each side that count; the first, which warms up, comes on top.
    int turns = 9;
};

// Runs both sides and prints their row. Returns the time of ours in microseconds.
double Compare(const Comparison& comparison, const std::function<void()>& ours,
               const std::function<void()>& theirs);

} // namespace bench
