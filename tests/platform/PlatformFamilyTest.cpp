#include "platform/PlatformFamily.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

using enum PlatformFamily;

TEST(PlatformFamilyTest, FollowsThePlatformAndTheVersion) {
    const struct {
        PlatformVersion version;
        PlatformFamily family;
    } rows[] = {
        {{1, 4, 0}, kWindows95},  {{1, 4, 1}, kWindows98},   {{1, 4, 10}, kWindows98},
        {{1, 4, 11}, kWindowsMe}, {{1, 4, 90}, kWindowsMe},  {{2, 3, 51}, kNt4},
        {{2, 4, 0}, kNt4},        {{2, 5, 0}, kWindows2000}, {{2, 5, 1}, kXp},
        {{2, 5, 2}, kXp},         {{2, 6, 1}, kXp},          {{2, 10, 0}, kWindows2000},
        {{0, 3, 11}, kUnknown},   {{3, 1, 0}, kUnknown},
    };
    for (const auto& [version, family] : rows) {
        EXPECT_EQ(family, ClassifyPlatform(version))
            << version.platform << " " << version.major << " " << version.minor;
        EXPECT_EQ(version.platform == 1, Is9xFamily(family));
        EXPECT_EQ(version.platform == 2, IsNtFamily(family));
    }
    EXPECT_EQ(kUnknown, ClassifyPlatform(std::nullopt));
}

} // namespace
} // namespace tervane
