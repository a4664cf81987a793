// What a comparison with a string (in tests/zelnet) does not show.

#include "ZelBase/ADynaByteBuffer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace ZelBase::test {
namespace {

TEST(ADynaByteBuffer, RefusesWhatLeadsNowhere) {
    ADynaByteBuffer buffer(4, 4);
    EXPECT_TRUE(buffer.Append("one;two", ADynaByteBuffer::kUntilNul));
    EXPECT_FALSE(buffer.Append(nullptr, 2));
    EXPECT_EQ(buffer.Size(), 7u);
    char dest[8] = {};
    std::size_t length = 99;
    EXPECT_FALSE(buffer.ReadUntil(';', nullptr, 8, &length, true, false));
    EXPECT_FALSE(buffer.ReadUntil(';', dest, 2, &length, false, false));
    EXPECT_EQ(length, 99u);
    EXPECT_TRUE(buffer.ReadUntil(';', dest, 3, &length, false, false));
    EXPECT_EQ(std::string(dest, length), "one");
    EXPECT_EQ(buffer.Size(), 3u); // the delimiter is taken, too
}

TEST(ADynaByteBuffer, GrowsInStepsAndNeverShrinks) {
    ADynaByteBuffer buffer(5120, 1024);
    EXPECT_EQ(buffer.Capacity(), 5120u);
    const std::string bytes(5121, 'x');
    buffer.Append(bytes.data(), 5120);
    EXPECT_EQ(buffer.Capacity(), 5120u);
    buffer.Append(bytes.data(), 1);
    EXPECT_EQ(buffer.Capacity(), 6144u);
    buffer.Clear();
    for (int i = 0; i < 100; ++i) { // runs around in what it has
        buffer.Append(bytes.data(), 1500);
        EXPECT_EQ(buffer.Skip(9999), 1500u);
    }
    EXPECT_EQ(buffer.Capacity(), 6144u);
}

double SecondsForQueues(std::size_t count, std::size_t size) {
    const auto start = std::chrono::steady_clock::now();
    for (; count != 0; --count) {
        ADynaByteBuffer buffer(5120, 1024);
        const std::string line(60, 'x');
        std::size_t index = 0;
        for (std::size_t filled = 0; filled < size; filled += line.size()) {
            buffer.Append(line.data(), line.size());
            EXPECT_FALSE(buffer.Find('\n', &index)); // one endless line
        }
        char chunk[512];
        while (buffer.Read(chunk, sizeof chunk, false)) {
        }
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The same bytes in one queue and in 32: moving or searching all that is there for each piece would
// take the one 32 times as long. A busy machine may disturb one comparison, but not all.
TEST(ADynaByteBuffer, CostsTimeLinearInItsBytes) {
    double ratio = 99;
    for (int i = 0; i < 20 && ratio > 8; ++i) {
        ratio = SecondsForQueues(1, 8 << 20) / SecondsForQueues(32, 256 << 10);
    }
    EXPECT_LE(ratio, 8);
}

} // namespace
} // namespace ZelBase::test
