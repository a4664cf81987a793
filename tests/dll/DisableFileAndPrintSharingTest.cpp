// DisableFileAndPrintSharing through the built DLL, on the Windows of this prefix and on others.

#include "support/ObjectTest.h"
#include "support/OtherWindows.h"
#include "support/ScratchRegistry.h"

namespace tervane::test {
namespace {

class DisableFileAndPrintSharingTest : public ObjectTest {
protected:
    DisableFileAndPrintSharingTest() : ObjectTest(L"DisableFileAndPrintSharing") {}
    // Elsewhere it would switch off the sharing of this machine.
    void SetUp() override { TERVANE_ONLY_ON_WINE(); }
};

// Wine has the service, disabled.
TEST_F(DisableFileAndPrintSharingTest, FindsNothingToDoWhenSharingIsOff) {
    Answers({{L"IsSharingEnabled", {}, L"false"},
             {L"LastErrorCode", {}, L"0"},
             {L"DisableSharing", {}, L"true"},
             {L"IsRebootNeeded", {}, L"false"},
             {L"LastErrorCode", {}, L"0"},
             {L"LastError", {}, L""}});
}

TEST_F(DisableFileAndPrintSharingTest, DISABLED_RemovesBindings) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    machine.Create(L"Enum\\Network\\MSTCP\\0000\\Bindings").WriteText(L"VSERVER\\0000", L"");
    Answers({{L"IsSharingEnabled", {}, L"true"},
             {L"DisableSharing", {}, L"true"},
             {L"IsRebootNeeded", {}, L"true"},
             {L"IsSharingEnabled", {}, L"false"},
             {L"DisableSharing", {}, L"true"},
             {L"IsRebootNeeded", {}, L"true"}});
    ReportValue(HasFailure() ? 0 : 1);
}

TEST_F(DisableFileAndPrintSharingTest, RemovesTheBindingsOfOldSystems) {
    const char* const test = "DisableFileAndPrintSharingTest.DISABLED_RemovesBindings";
    for (const char* version : {"win95", "win98", "winme"}) {
        EXPECT_EQ(1, ValueOn(version, test)) << version;
    }
    EXPECT_EQ(0, ValueOn("winxp", test));
}

} // namespace
} // namespace tervane::test
