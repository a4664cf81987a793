// The byte buffer against a plain string, as the fuzzer drives them, with random operations.

#define LLVMFuzzerTestOneInput CompareWithAString
#include "fuzz/byte_buffer.cpp"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace ZelNet {
namespace {

TEST(ADynaByteBuffer, BehavesAsAString) {
    std::mt19937 random(4711);
    for (int turn = 0; turn < 200; ++turn) {
        std::vector<std::uint8_t> operations(2000);
        for (std::uint8_t& byte : operations) {
            byte = static_cast<std::uint8_t>(random() % (turn % 2 ? 16 : 256));
        }
        EXPECT_EQ(CompareWithAString(operations.data(), operations.size()), 0); // or it aborts
    }
}

} // namespace
} // namespace ZelNet
