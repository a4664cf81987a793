// DisableFileAndPrintSharing through the built DLL, on the Windows of this prefix and on others.

#include "support/OtherWindows.h"
#include "support/ScratchRegistry.h"
#include "support/TestComponent.h"

#include <gtest/gtest.h>

#include <TERVANELib.h>

namespace tervane::test {
namespace {

class DisableFileAndPrintSharingTest : public testing::Test {
protected:
    void SetUp() override {
        if (!IsWine()) {
            GTEST_SKIP() << "would switch off the sharing of this machine";
        }
    }
    long Number(const wchar_t* property) { return Read(object_.Get(), property).Number(); }
    long TurnOff() { return Call(object_.Get(), L"DisableSharing").Number(); }

    Apartment apartment_;
    ComPtr<IDispatch> object_ = TestComponent::Get().Create(__uuidof(::DisableFileAndPrintSharing));
};

// Wine has the service, disabled.
TEST_F(DisableFileAndPrintSharingTest, FindsNothingToDoWhenSharingIsOff) {
    EXPECT_EQ(0, Number(L"IsSharingEnabled"));
    EXPECT_EQ(0, Number(L"LastErrorCode"));
    EXPECT_EQ(-1, TurnOff());
    EXPECT_EQ(0, Number(L"IsRebootNeeded"));
    EXPECT_EQ(0, Number(L"LastErrorCode"));
    EXPECT_EQ(L"", Read(object_.Get(), L"LastError").Text());
}

TEST_F(DisableFileAndPrintSharingTest, DISABLED_RemovesBindings) {
    const ScratchHive machine(RegistryHive::kLocalMachine);
    machine.Create(L"Enum\\Network\\MSTCP\\0000\\Bindings").WriteText(L"VSERVER\\0000", L"");
    const bool isRight = Number(L"IsSharingEnabled") == -1 && TurnOff() == -1 &&
                         Number(L"IsRebootNeeded") == -1 && Number(L"IsSharingEnabled") == 0 &&
                         TurnOff() == -1 && Number(L"IsRebootNeeded") == -1;
    ReportValue(isRight ? 1 : 0);
}

TEST_F(DisableFileAndPrintSharingTest, RemovesTheBindingsOfOldSystems) {
    for (const char* version : {"win95", "win98", "winme"}) {
        EXPECT_EQ(1, ValueOn(version, "DisableFileAndPrintSharingTest.DISABLED_RemovesBindings"))
            << version;
    }
    EXPECT_EQ(0, ValueOn("winxp", "DisableFileAndPrintSharingTest.DISABLED_RemovesBindings"));
}

} // namespace
} // namespace tervane::test
