#include "objects/sysinfo/processor/BoundedThread.h"
#include "objects/sysinfo/processor/FaultBarrier.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace tervane {
namespace {

TEST(BoundedThreadTest, EndsWithTheWorkOrWithTheTime) {
    const auto steps = std::make_shared<int>(0);
    EXPECT_EQ(BoundedEnd::kEnded, RunBounded([steps] { ++*steps; }, INFINITE));
    EXPECT_EQ(BoundedEnd::kEnded, RunBounded([] { throw std::runtime_error(""); }, 5000));
    EXPECT_EQ(1, *steps);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(BoundedEnd::kTimedOut, RunBounded(
                                         [steps] {
                                             for (;; Sleep(10)) {
                                                 ++*steps;
                                             }
                                         },
                                         200));
    EXPECT_GE(GetTickCount64() - start, 190u);
    const int until = *steps;
    EXPECT_GT(until, 1);
    Sleep(100);
    EXPECT_EQ(until, *steps);
}

// A fault that is not caught ends this program.
TEST(FaultBarrierTest, AFaultEndsItsThreadOnly) {
    const FaultBarrier barrier;
    const auto steps = std::make_shared<int>(0);
    for (int kind = 0; kind < 3; ++kind) {
        EXPECT_EQ(BoundedEnd::kEnded, RunBounded(
                                          [steps, kind] {
                                              FaultBarrier::GuardThisThread();
                                              *steps = kind + 1;
                                              volatile int* nowhere = nullptr;
                                              switch (kind) {
                                              case 0:
                                                  asm volatile("ud2");
                                                  break;
                                              case 1:
                                                  asm volatile("cli"); // for the system only
                                                  break;
                                              default:
                                                  *nowhere = 1;
                                              }
                                              *steps = 0;
                                          },
                                          5000));
        EXPECT_EQ(kind + 1, *steps);
    }
}

} // namespace
} // namespace tervane
