#pragma once

// What this process uses of the system, and whether that has grown.

#include <cstddef>
#include <string>
#include <vector>

namespace tervane::test {

struct Usage {
    size_t handles;
    size_t threads;
    size_t privateKb;
    size_t tlsSlots;

    static Usage Now();
};

// The figures at the ends of the rounds.
class UsageSeries {
public:
    void Add(const Usage& usage) { all_.push_back(usage); }
    // Compares the medians of the second and the last quarter, so that neither what is made once
    // nor a single peak counts. What has grown, "" when nothing has; too few rounds prove nothing.
    std::string Growth() const;

private:
    std::vector<Usage> all_;
};

} // namespace tervane::test
