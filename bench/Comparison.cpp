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

void PrintRow(const Row& row) {
    const char* goalOf = row.mostRatio >= 0 ? "ratio" : row.most >= 0 ? "ours" : "-";
    std::printf("row\t%s\t%.3f\t%.3f\t%.*s\t%s\t%g\n", row.what.c_str(), row.ours, row.theirs,
                static_cast<int>(row.unit.size()), row.unit.data(), goalOf,
                row.mostRatio >= 0 ? row.mostRatio : row.most);
    std::fflush(stdout);
}

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
    PrintRow({comparison.title, mine, other, "us", comparison.mostRatio});
    return mine;
}

} // namespace bench
