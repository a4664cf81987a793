#include "ZelNet/SourceCode/IpAddress.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace ZelNet
