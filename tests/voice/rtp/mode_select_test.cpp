// The mode that follows from a request and from what was agreed.

#include "zspvoice.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int32_t kNone = ZSPV_NO_REQUEST;

struct Row {
    std::int32_t set, period, neighbor, requested, current, frames, want;
    const char* why;
};

constexpr Row kRows[] = {
    {0x00, 0, 0, kNone, -1, 0, 3, "no set: mode 3 first"},
    {0xFF, 0, 0, kNone, -1, 0, 3, "of two in the middle the lower one"},
    {0x95, 0, 0, kNone, -1, 0, 2, "of four the second"},
    {0x07, 0, 0, kNone, -1, 0, 1, "of three the second"},
    {0x80, 0, 0, kNone, -1, 0, 7, "of one this one"},
    {0x95, 0, 0, 4, -1, 0, 4, "a request before the first frame"},
    {0x95, 1, 1, 7, -1, 0, 7, "which need not be a neighbour"},
    {0x95, 0, 0, kNone, 4, 9, 4, "no request: stays"},
    {0x95, 0, 0, 14, 4, 9, 4, "a reserved request: stays"},
    {0x95, 0, 0, 7, 0, 1, 7, "up at once"},
    {0x95, 0, 0, 6, 0, 1, 4, "a request outside the set is a limit"},
    {0x94, 0, 0, 0, 7, 1, 2, "below the set: its lowest"},
    {0x00, 0, 0, 8, 0, 1, 8, "no set: also the mode that AMR-WB alone has"},
    {0x95, 0, 1, 7, 0, 1, 2, "neighbours upwards"},
    {0x95, 0, 1, 0, 7, 1, 4, "neighbours downwards"},
    {0x95, 2, 0, 7, 0, 0, 0, "period 2: not again before a frame"},
    {0x95, 2, 0, 7, 0, 1, 0, "period 2: not after one frame"},
    {0x95, 2, 0, 7, 0, 2, 7, "period 2: after two"},
    {0x95, 2, 1, 7, 0, 3, 0, "period 2: not after three"},
    {0x95, 2, 1, 7, 0, 4, 2, "period 2: after four, to the neighbour"},
    {0x95, 2, 1, kNone, 5, 1, 4, "a mode that the set has lost is left at once"},
    {0x95, 0, 0, kNone, 14, 1, 7, "so is one that never was"},
};

TEST(ModeSelect, FollowsRequestSetPeriodAndNeighbours)
{
    for (const Row& row : kRows) {
        ZspvParams params{};
        params.structSize = sizeof params;
        params.modeSet = row.set;
        params.modeChangePeriod = row.period;
        params.modeChangeNeighbor = row.neighbor;
        std::int32_t mode = -1;
        EXPECT_EQ(zspvSelectMode(&params, row.requested, row.current, row.frames, &mode),
                  zspStsNoErr);
        EXPECT_EQ(mode, row.want) << row.why;
    }
}

TEST(ModeSelect, ChecksItsArguments)
{
    ZspvParams params{};
    std::int32_t mode = 77;
    EXPECT_EQ(zspvSelectMode(&params, 99, 0, 0, nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvSelectMode(&params, 99, 0, 0, &mode), zspStsSizeErr);
    EXPECT_EQ(zspvSelectMode(nullptr, 16, 0, 0, &mode), zspStsRangeErr);
    EXPECT_EQ(zspvSelectMode(nullptr, -1, 0, 0, &mode), zspStsRangeErr);
    EXPECT_EQ(zspvSelectMode(nullptr, 0, -2, 0, &mode), zspStsRangeErr);
    EXPECT_EQ(zspvSelectMode(nullptr, 0, 15, 0, &mode), zspStsRangeErr);
    EXPECT_EQ(zspvSelectMode(nullptr, 0, 0, -1, &mode), zspStsRangeErr);
    EXPECT_EQ(mode, 77);
    EXPECT_EQ(zspvSelectMode(nullptr, 5, 0, 0, &mode), zspStsNoErr);
    EXPECT_EQ(mode, 5);
}

} // namespace
