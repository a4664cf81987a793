#include "bench/LogBench.h"

#include "ZelBase/Handles.h"
#include "ZelBase/log/LogLayout.h"
#include "ZelBase/log/Logger.h"
#include "bench/Comparison.h"
#include "tests/support/TestThreads.h"

#include <cstring>
#include <functional>
#include <vector>

namespace bench {
namespace {

constexpr int kRecords = 500;
constexpr int kWriters = 4;

void OnThreads(int threads, const std::function<void()>& work) {
    std::vector<tervane::test::TestThread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back(work);
    }
    for (tervane::test::TestThread& thread : running) {
        thread.join();
    }
}

} // namespace

void CompareLogging() {
    const auto logger = ZelBase::Logger::Create();
    const ZelBase::UniqueHandle mutex(CreateMutexA(nullptr, FALSE, "TervaneBench::Mutex"));
    const ZelBase::UniqueHandle event(CreateEventA(nullptr, TRUE, FALSE, "TervaneBench::Event"));
    static ZelBase::LogRecord source;
    static ZelBase::LogRecord target;
    const auto ours = [&] {
        for (int i = 0; i < kRecords; ++i) {
            logger->Log("Bench", ZelBase::LogLevel::kTrace, "record %d", i);
        }
    };
    const auto theirs = [&] {
        for (int i = 0; i < kRecords; ++i) {
            WaitForSingleObject(mutex.Get(), INFINITE);
            std::memcpy(&target, &source, sizeof target);
            PulseEvent(event.Get());
            ReleaseMutex(mutex.Get());
        }
    };
    Compare({"500 log records, one writer : wait, copy, pulse, release", 1.15, 1}, ours, theirs);
    Compare(
        {"500 log records each, four writers : the same", 1.3, 1},
        [&] { OnThreads(kWriters, ours); }, [&] { OnThreads(kWriters, theirs); });
}

} // namespace bench
