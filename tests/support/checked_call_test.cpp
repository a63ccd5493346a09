// The look at the processor after a call finds every single thing that a callee can leave behind.

#include "tests/support/checked_call.hpp"

#include <gtest/gtest.h>

#include <string>

extern "C" {
void zspLeaveNothing();
void zspLeaveUpperHalf();
void zspLeaveUpperZero();
void zspLeaveRbx();
void zspLeaveR15();
void zspLeaveRsp();
void zspLeaveRounding();
void zspLeaveX87Word();
void zspLeaveX87Stack();
void zspLeaveMmx();
void zspLeaveDirection();
void zspLeaveXmm6();
}

namespace {

using zsp::test::checked;
using zsp::test::leftBehind;
using zsp::test::seesZeroUpperHalves;

struct Row {
    void (*callee)();
    std::string found; // the first thing named, or nothing
};

const Row kRows[] = {
    {zspLeaveNothing, ""},
    {zspLeaveUpperHalf, "upper half of ymm5 dirty"},
    {zspLeaveUpperZero, seesZeroUpperHalves() ? "upper halves in use" : ""},
    {zspLeaveRbx, "rbx changed"},
    {zspLeaveR15, "r15 changed"},
    {zspLeaveRsp, "stack pointer moved"},
    {zspLeaveRounding, "MXCSR control bits changed"},
    {zspLeaveX87Word, "x87 control word changed"},
    {zspLeaveX87Stack, "x87 stack not empty"},
    {zspLeaveMmx, "x87 stack not empty"},
    {zspLeaveDirection, "direction flag set"},
#ifdef _WIN32
    {zspLeaveXmm6, "xmm6 changed"},
#else
    {zspLeaveXmm6, ""},
#endif
};

TEST(CheckedCall, FindsWhatIsLeftBehind)
{
    for (const Row& row : kRows) {
        checked(row.callee)();
        const std::string found = leftBehind();
        EXPECT_EQ(found.substr(0, found.find(',')), row.found);
    }
}

double manyArguments(int a, double b, int c, float d, long long e, int f, int g, const int* h,
                     int i, double j)
{
    return a + b + c + static_cast<double>(d) + static_cast<double>(e) + f + g + *h + i + j;
}

TEST(CheckedCall, PassesArgumentsAndResultOn)
{
    const int h = 128;
    EXPECT_EQ(checked(manyArguments)(1, 2, 4, 8, 16, 32, 64, &h, 256, 512), 1023);
    EXPECT_EQ(leftBehind(), "");
}

} // namespace
