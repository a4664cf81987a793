#include "bench/Comparison.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace bench {

namespace {

double Microseconds() {
    LARGE_INTEGER now;
    LARGE_INTEGER perSecond;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&perSecond);
    return 1e6 * static_cast<double>(now.QuadPart) / static_cast<double>(perSecond.QuadPart);
}

double TimeOfTurn(const std::function<void()>& side, int repetitions) {
    double start = Microseconds();
    for (int i = 0; i < repetitions; ++i) {
        side();
    }
    return (Microseconds() - start) / repetitions;
}

double Median(std::vector<double> times) {
    auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

} // namespace

double Compare(const Comparison& comparison, const std::function<void()>& ours,
               const std::function<void()>& theirs) {
    std::vector<double> oursTimes;
    std::vector<double> theirsTimes;
    // The first turn of each side warms up and is not counted.
    for (int turn = 0; turn <= comparison.turns; ++turn) {
        double mine = TimeOfTurn(ours, comparison.repetitions);
        double other = TimeOfTurn(theirs, comparison.repetitions);
        if (turn > 0) {
            oursTimes.push_back(mine);
            theirsTimes.push_back(other);
        }
    }
    double mine = Median(std::move(oursTimes));
    double other = Median(std::move(theirsTimes));
    std::printf("%-58s %10.2f us %10.2f us  ratio %5.2f", comparison.title, mine, other,
                mine / other);
    if (comparison.aim > 0) {
        std::printf("  (aim %.1f)", comparison.aim);
    }
    std::printf("\n");
    std::fflush(stdout);
    return mine;
}

} // namespace bench
