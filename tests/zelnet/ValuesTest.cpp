#include "ZelNet/SourceCode/IpAddress.h"

#define LLVMFuzzerTestOneInput CompareWithAString
#include "fuzz/byte_buffer.cpp"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace ZelNet {
namespace {

TEST(IpAddress, ReadsTexts) {
    for (const auto& [text, expected] : {std::pair("192.168.1.20", "192.168.1.20"),
                                         {"255.255.255.255", "255.255.255.255"},
                                         {"0.0.0.0", "0.0.0.0"},
                                         {"10.1", "10.0.0.1"},
                                         {"0x7f.0.0.1", "127.0.0.1"},
                                         {"1.2.3.256", ""},
                                         {"255.255.255.255.", ""},
                                         {"www.example", ""},
                                         {"", ""},
                                         {"1.2.3.4.5", ""}}) {
        const bool isAddress = *expected != 0;
        IpAddress address(0x01020304u);
        EXPECT_EQ(address.SetAddress(text), isAddress) << text;
        EXPECT_EQ(address.IsValid(), isAddress) << text;
        EXPECT_EQ(address.GetText(), isAddress ? expected : "0.0.0.0") << text;
    }
}

TEST(IpAddress, ValuesAreInNetworkOrder) {
    EXPECT_EQ(LoopbackAddress().GetValue(), 0x0100007Fu);
    EXPECT_EQ(IpAddress(0x0100007Fu), LoopbackAddress());
    EXPECT_EQ(IpAddress().GetText(), "0.0.0.0");
    IpAddress address("nonsense");
    address.SetAddress(0xFFFFFFFFu);
    EXPECT_TRUE(address.IsValid());
    EXPECT_EQ(address.GetText(), "255.255.255.255");
}

// As the fuzzer drives it, with random operations.
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
