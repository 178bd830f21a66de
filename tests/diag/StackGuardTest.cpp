#include "diag/Compiler.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace {

BX_NEVER_INLINE void FillSixteen(size_t count) {
    volatile char text[16];
    for (volatile char *to = text; to != text + count; to++)
        *to = 1;
}

void FillAndEnd(size_t count) {
    FillSixteen(count);
    ExitProcess(7);
}

// Wine has one code for every end of this kind, Windows that of the fault.
bool IsOverrun(int code) {
    return static_cast<DWORD>(code) == STATUS_STACK_BUFFER_OVERRUN || static_cast<DWORD>(code) == 0xC0000602;
}

TEST(StackGuardDeathTest, AnOverrunArrayEndsTheProcess) {
    EXPECT_EXIT(FillAndEnd(16), testing::ExitedWithCode(7), "");
    EXPECT_EXIT(FillAndEnd(32), IsOverrun, "");
}

} // namespace
