#pragma once

// Collects what this process writes into the log while a test runs, and finds texts in it.

#include "ZelBase/log/LogRing.h"
#include "tests/support/TestThreads.h"

#include <atomic>
#include <set>
#include <string>

namespace ZelNet {

class TraceCollector {
public:
    TraceCollector();
    ~TraceCollector();

    // Whether a record like "Component|Function|3|text" has come, waiting a while for it; "*"
    // stands for a number or a name.
    bool Has(const std::string& pattern, int patienceMs = 5000);

private:
    void Collect();

    const std::unique_ptr<ZelBase::LogRing> ring_;
    std::uint32_t seen_ = 0;
    tervane::test::TestMutex mutex_;
    std::set<std::string> records_;
    std::atomic<bool> ending_ = false;
    tervane::test::TestThread thread_;
};

} // namespace ZelNet
