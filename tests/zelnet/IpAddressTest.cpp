#include "ZelNet/SourceCode/IpAddress.h"

#include <gtest/gtest.h>

namespace ZelNet {
namespace {

TEST(IpAddress, ReadsTexts) {
    const struct {
        const char* text;
        const char* address; // null: not an address
    } cases[] = {
        {"192.168.1.20", "192.168.1.20"},
        {"255.255.255.255", "255.255.255.255"},
        {"0.0.0.0", "0.0.0.0"},
        {"10.1", "10.0.0.1"},
        {"0x7f.0.0.1", "127.0.0.1"},
        {"1.2.3.256", nullptr},
        {"255.255.255.255.", nullptr},
        {"www.example", nullptr},
        {"", nullptr},
        {"1.2.3.4.5", nullptr},
    };
    for (const auto& row : cases) {
        IpAddress address(0x01020304u);
        EXPECT_EQ(address.SetAddress(row.text), row.address != nullptr) << row.text;
        EXPECT_EQ(address.IsValid(), row.address != nullptr) << row.text;
        EXPECT_EQ(address.GetText(), row.address ? row.address : "0.0.0.0") << row.text;
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
