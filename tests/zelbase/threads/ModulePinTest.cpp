#include "ZelBase/threads/ModulePin.h"

#include <gtest/gtest.h>

#include <memory>

namespace ZelBase::test {
namespace {

constexpr wchar_t kProbe[] = L"pin_probe.dll";

// Whether the library is gone, now or soon: a thread lets go of it a moment before it ends.
bool IsUnloaded() {
    for (int i = 0; i < 400 && GetModuleHandleW(kProbe); ++i) {
        Sleep(5);
    }
    return !GetModuleHandleW(kProbe);
}

DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    EXPECT_EQ(WaitForSingleObject(thread, 20000), WAIT_OBJECT_0);
    GetExitCodeThread(thread, &code);
    return code;
}

TEST(ModulePin, KeepsALibraryUntilItsThreadHasEnded) {
    UniqueLibrary probe(LoadLibraryW(kProbe));
    ASSERT_TRUE(probe) << "build pin_probe first";
    auto* startLingering = reinterpret_cast<HANDLE (*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(probe.Get(), "StartLingering")));
    const UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle thread(startLingering(go.Get()));
    ASSERT_TRUE(thread);
    probe.Reset();
    Sleep(50);
    EXPECT_NE(GetModuleHandleW(kProbe), nullptr);
    SetEvent(go.Get());
    EXPECT_EQ(ExitCode(thread.Get()), 11u);
    EXPECT_TRUE(IsUnloaded());
}

TEST(ModulePin, GivesTheLibraryBackHoweverAThreadEnds) {
    const std::pair<const char*, DWORD> rows[] = {{"StartThrowing", ModulePin::kEscapedException},
                                                  {"StartEndingItself", 12}};
    for (const auto& [start, code] : rows) {
        UniqueLibrary probe(LoadLibraryW(kProbe));
        ASSERT_TRUE(probe);
        const UniqueHandle thread(reinterpret_cast<HANDLE (*)()>(
            reinterpret_cast<void*>(GetProcAddress(probe.Get(), start)))());
        probe.Reset();
        EXPECT_EQ(ExitCode(thread.Get()), code);
        EXPECT_TRUE(IsUnloaded()) << start;
    }
}

TEST(ModulePin, MovesWhatTheRoutineOwns) {
    auto owned = std::make_unique<int>(5);
    const std::weak_ptr<int> watched = [&, shared = std::make_shared<int>(6)]() mutable {
        std::weak_ptr<int> weak = shared;
        const UniqueHandle thread = ModulePin::StartThread(
            [owned = std::move(owned), shared = std::move(shared)] { return *owned + *shared; });
        EXPECT_EQ(ExitCode(thread.Get()), 11u);
        return weak;
    }();
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace ZelBase::test
