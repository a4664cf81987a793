#include "ZelBase/ADynaByteBuffer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace ZelBase::test {
namespace {

std::string Taken(ADynaByteBuffer& buffer, std::size_t count, bool peek = false) {
    std::string bytes(count, '?');
    return buffer.Read(bytes.data(), count, peek) ? bytes : "refused";
}

TEST(ADynaByteBuffer, ReadsWholeRequestsOnly) {
    ADynaByteBuffer buffer(4, 4);
    EXPECT_TRUE(buffer.Append("abcdef", ADynaByteBuffer::kUntilNul));
    EXPECT_TRUE(buffer.Append("\0g", 2));
    EXPECT_FALSE(buffer.Append(nullptr, 2));
    EXPECT_EQ(buffer.Size(), 8u);
    EXPECT_EQ(Taken(buffer, 9), "refused");
    EXPECT_EQ(Taken(buffer, 0), "refused");
    EXPECT_EQ(Taken(buffer, 5, true), "abcde");
    EXPECT_EQ(Taken(buffer, 5), "abcde");
    EXPECT_EQ(Taken(buffer, 3), std::string("f\0g", 3));
    EXPECT_EQ(buffer.Size(), 0u);
}

TEST(ADynaByteBuffer, ReadsUntilADelimiter) {
    ADynaByteBuffer buffer(8, 8);
    buffer.Append("one;two\n;", 9);
    char dest[8] = {};
    std::size_t length = 99;
    EXPECT_FALSE(buffer.ReadUntil('#', dest, sizeof dest, &length, false, false));
    EXPECT_FALSE(buffer.ReadUntil(';', dest, 2, &length, false, false));
    EXPECT_FALSE(buffer.ReadUntil(';', dest, 3, &length, true, false));
    EXPECT_FALSE(buffer.ReadUntil(';', nullptr, 8, &length, true, false));
    EXPECT_EQ(length, 99u);
    EXPECT_TRUE(buffer.ReadUntil(';', dest, 4, &length, true, true));
    EXPECT_EQ(std::string(dest, length), "one;");
    EXPECT_TRUE(buffer.ReadUntil(';', dest, 3, &length, false, false));
    EXPECT_EQ(std::string(dest, length), "one");
    EXPECT_TRUE(buffer.ReadUntil('\n', dest, 8, &length, false, false));
    EXPECT_EQ(std::string(dest, length), "two");
    EXPECT_TRUE(buffer.ReadUntil(';', dest, 0, &length, false, false)); // nothing before it
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(buffer.Size(), 0u);
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

double SecondsForQueue(std::size_t size) {
    const auto start = std::chrono::steady_clock::now();
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
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The best of several runs, as other programs want the processor too.
double BestSecondsForQueue(std::size_t size, int runs) {
    double best = SecondsForQueue(size);
    for (int i = 1; i < runs; ++i) {
        best = std::min(best, SecondsForQueue(size));
    }
    return best;
}

// With 32 times the bytes, moving or searching all that is there for each piece takes 1,024 times
// as long; the bound leaves ten times the linear cost to a busy machine.
TEST(ADynaByteBuffer, CostsTimeLinearInItsBytes) {
    const double small = BestSecondsForQueue(256 << 10, 20);
    EXPECT_LT(BestSecondsForQueue(8 << 20, 5), 10 * 32 * small) << small;
}

} // namespace
} // namespace ZelBase::test
