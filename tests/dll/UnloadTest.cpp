// A host that loads the library for one call and unloads it, again and again.

#include "support/HandleCount.h"
#include "support/MemoryUse.h"
#include "support/TestComponent.h"

#include <TERVANELib.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tervane::test {
namespace {

// A copy, because other tests of this program keep the library itself loaded; one per architecture,
// whose programs may run at the same time in the same folder.
constexpr const wchar_t* kCopy = sizeof(void*) == 8 ? L"TervaneCopy64.DLL" : L"TervaneCopy32.DLL";

void LoadCallUnload() {
    const TestComponent component(kCopy);
    ASSERT_TRUE(component.Module());
    const ComPtr<IDispatch> manager = component.Create(__uuidof(WindowMgr));
    ASSERT_TRUE(manager);
    // An exception is thrown and caught inside.
    EXPECT_EQ(L"false", Ask(manager.Get(), L"SetWindowState", {3, L"("}));
    EXPECT_EQ(L"2", Ask(manager.Get(), L"LastErrorCode"));
}

struct Taken {
    DWORD slot; // the lowest that is free
    size_t handles;
    size_t bytes;
};

Taken TakenNow() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return {slot, OpenHandleCount(), CommittedMemory()};
}

// The environment may ask for more, TERVANE_CYCLES=10000.
TEST(UnloadTest, TakesNothingAlong) {
    constexpr int kWarmUp = 30;
    constexpr size_t kMostBytesPerCycle = 100;
    constexpr size_t kHeapGrowth = 512 * 1024; // once, whatever the number of cycles
    const char* wanted = std::getenv("TERVANE_CYCLES");
    const int cycles = wanted ? std::atoi(wanted) : 300;
    const Apartment apartment;
    ASSERT_TRUE(CopyFileW(TestComponent::Get().Path().c_str(), kCopy, FALSE));
    const auto run = [](int count) {
        for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
            LoadCallUnload();
            EXPECT_FALSE(GetModuleHandleW(kCopy));
        }
    };
    run(kWarmUp);
    const Taken before = TakenNow();
    run(cycles);
    const Taken after = TakenNow();
    EXPECT_EQ(before.slot, after.slot);
    EXPECT_LE(after.handles, before.handles);
    EXPECT_LE(after.bytes, before.bytes + kHeapGrowth + cycles * kMostBytesPerCycle);
    RecordProperty("bytes", std::to_string(static_cast<long>(after.bytes - before.bytes)));
    EXPECT_TRUE(DeleteFileW(kCopy));
}

} // namespace
} // namespace tervane::test
