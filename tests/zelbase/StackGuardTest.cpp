#include <gtest/gtest.h>

#include <cstdint>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

[[gnu::noipa]] void Fill(volatile char* text, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        text[i] = 'x';
    }
}

[[gnu::noipa]] void Overrun() {
    char text[16];
    // The guard lies behind the text, perhaps after a gap, and before all that would not be missed.
    Fill(text, sizeof text + 2 * sizeof __stack_chk_guard);
}

TEST(StackGuard, EndsTheProcessWhereAStackWasWrittenOver) {
    EXPECT_NE(0u, __stack_chk_guard);
    EXPECT_DEATH(Overrun(), "");
}

} // namespace
