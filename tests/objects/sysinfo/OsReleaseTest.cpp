#include "objects/sysinfo/OsRelease.h"

#include <gtest/gtest.h>

namespace tervane {
namespace {

TEST(OsReleaseTest, ClassifiesEveryRow) {
    const struct {
        VersionRecord version;
        const wchar_t* code;
    } rows[] = {
        {{1, 4, 0, "", 0, 0}, L"win95osr1"},
        {{1, 4, 0, " B", 0, 0}, L"win95osr2"},
        {{1, 4, 0, "  B", 0, 0}, L"win95osr1"},
        {{1, 4, 0, " C", 0, 0}, L"win95osr2.5"},
        {{1, 4, 1, "", 0, 0}, L"win98fe"},
        {{1, 4, 10, "", 0, 0}, L"win98fe"},
        {{1, 4, 10, " A ", 0, 0}, L"win98se"},
        {{1, 4, 11, "", 0, 0}, L"winme"},
        {{2, 4, 0, "", 0, 0}, L"winnt4"},
        {{2, 4, 0, "Service Pack 1", 0, 0}, L"winnt4sp1"},
        {{2, 4, 0, "Service Pack 2", 0, 0}, L"winnt4sp2"},
        {{2, 4, 0, "Service Pack 3", 0, 0}, L"winnt4sp3"},
        {{2, 4, 0, "Service Pack 4", 0, 0}, L"winnt4sp4"},
        {{2, 4, 0, "Service Pack 5", 0, 0}, L"winnt4sp5"},
        {{2, 4, 0, "Service Pack 6a", 0, 0}, L"winnt4sp6"},
        {{2, 4, 0, "Service Pack -1", 0, 0}, L"winnt4spgt6"},
        {{2, 4, 0, "Service Pack", 0, 0}, L"winnt4"},
        {{2, 6, 1, "Service Pack 1", 0x80, 3}, L"winnt4sp1"},
        {{2, 5, 0, "", 0, 1}, L"win2k"},
        {{2, 5, 0, "Service Pack 1", 0, 1}, L"win2ksp1"},
        {{2, 5, 0, "Service Pack 2", 0, 1}, L"win2ksp2"},
        {{2, 5, 0, "Service Pack 3", 0, 1}, L"win2ksp3"},
        {{2, 5, 0, "Service Pack 4", 0, 1}, L"win2kgtsp3"},
        {{2, 5, 0, "", 0, 3}, L"win2ksrvr"},
        {{2, 5, 0, "Service Pack 1", 0, 2}, L"win2ksrvrsp1"},
        {{2, 5, 2, "Service Pack 2", 0, 3}, L"win2ksrvrsp2"},
        {{2, 5, 0, "Service Pack 3", 0, 3}, L"win2ksrvrsp3"},
        {{2, 5, 0, "Service Pack 4", 0, 3}, L"win2ksrvrgtwp3"},
        {{2, 5, 0, "", 0x2, 3}, L"win2kadvsrvr"},
        {{2, 5, 0, "Service Pack 1", 0x2, 3}, L"win2kadvsrvrsp1"},
        {{2, 5, 0, "Service Pack 2", 0x2, 1}, L"win2kadvsrvrsp2"},
        {{2, 5, 0, "Service Pack 3", 0x2, 3}, L"win2kadvsrvrsp3"},
        {{2, 5, 0, "Service Pack 12", 0x2, 3}, L"win2kadvsrvrgtsp3"},
        {{2, 5, 0, "", 0x82, 3}, L"win2kdatacntrsrvr"},
        {{2, 5, 0, "Service Pack 1", 0x80, 3}, L"win2kdatacntrsrvrsp1"},
        {{2, 5, 0, "Service Pack 2", 0x80, 3}, L"win2kdatacntrsrvrsp2"},
        {{2, 5, 0, "Service Pack 3", 0x80, 3}, L"win2kdatacntrsrvrsp3"},
        {{2, 5, 0, "Service Pack 4", 0x80, 3}, L"win2kdatacntrsrvrgtsp3"},
        {{2, 5, 1, "", 0x200, 1}, L"winxpper"},
        {{2, 5, 1, "Service Pack 1", 0x200, 1}, L"winxpper"},
        {{2, 5, 1, "Service Pack 1", 0x100, 1}, L"winxppro"},
        {{0, 3, 11, "", 0, 0}, L"error"},
    };
    for (const auto& [version, code] : rows) {
        EXPECT_STREQ(code, OsCode(ClassifyOs(version)))
            << version.major << "." << version.minor << " " << version.serviceText;
    }
    EXPECT_STREQ(L"error", OsCode(ClassifyOs(std::nullopt)));
}

TEST(OsReleaseTest, HasTwoCodesThatNoSystemGets) {
    EXPECT_STREQ(L"winxppersp1", OsCode(37));
    EXPECT_STREQ(L"winxpprosp1", OsCode(38));
    for (const int number : {-1, 0, 39}) {
        EXPECT_STREQ(L"error", OsCode(number));
    }
}

} // namespace
} // namespace tervane
