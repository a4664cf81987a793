#pragma once

// The numbers of adapter requests. A caller chooses its own below 1000; all others are drawn in
// turn for the whole process, so that no two objects' requests are taken for each other.

#include <atomic>

namespace tervane {

class RequestIds {
public:
    static constexpr long kFirst = 1001;
    static constexpr long kLast = 2147483000;
    static constexpr long kAfterLast = 1000;

    constexpr explicit RequestIds(long first = kFirst) : next_(first) {}

    // `wanted` if it is from 1 to 999, else the next number. Any thread.
    long Choose(long wanted) {
        if (wanted >= 1 && wanted <= kMostChosen) {
            return wanted;
        }
        long drawn = next_;
        while (!next_.compare_exchange_weak(drawn, drawn == kLast ? kAfterLast : drawn + 1)) {
        }
        return drawn;
    }

private:
    static constexpr long kMostChosen = 999;

    std::atomic<long> next_;
};

} // namespace tervane
