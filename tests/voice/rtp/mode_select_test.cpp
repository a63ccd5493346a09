// The mode that follows from a request and from what was agreed.

#include "zspvoice.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int32_t kNone = ZSPV_NO_REQUEST;

/// As much of a codec as counts here.
ZspvCodec withModes(std::int32_t count)
{
    ZspvCodec codec{};
    codec.structSize = sizeof codec;
    codec.bitRateCount = count;
    return codec;
}

const ZspvCodec kAmr = withModes(8), kAmrWb = withModes(9);

struct Row {
    std::int32_t set, period, neighbor, requested, current, frames, want;
    const char* why;
    const ZspvCodec* codec = &kAmr;
};

const Row kRows[] = {
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
    {0x00, 0, 0, 8, 0, 1, 8, "no set: also the mode that AMR-WB alone has", &kAmrWb},
    {0x00, 0, 0, kNone, -1, 0, 3, "which it does not begin with", &kAmrWb},
    {0x00, 0, 0, 8, 0, 1, 0, "for AMR a reserved request"},
    {0x100, 0, 0, 7, 0, 1, 7, "a set without a mode of the codec is none"},
    {0x181, 0, 0, 7, 8, 1, 7, "mode 8 in use is left where AMR is coded"},
    {0x181, 0, 0, kNone, 8, 1, 8, "and stays with AMR-WB", &kAmrWb},
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
        EXPECT_EQ(zspvSelectMode(row.codec, &params, row.requested, row.current, row.frames, &mode),
                  zspStsNoErr);
        EXPECT_EQ(mode, row.want) << row.why;
    }
}

TEST(ModeSelect, ChecksItsArguments)
{
    ZspvParams params{};
    const ZspvCodec none = withModes(0), many = withModes(16);
    std::int32_t mode = 77;
    EXPECT_EQ(zspvSelectMode(nullptr, &params, 99, 0, 0, &mode), zspStsNullPtrErr);
    EXPECT_EQ(zspvSelectMode(&kAmr, &params, 99, 0, 0, nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvSelectMode(&none, &params, 99, 0, 0, &mode), zspStsSizeErr);
    EXPECT_EQ(zspvSelectMode(&none, nullptr, 99, 0, 0, &mode), zspStsBadArgErr);
    EXPECT_EQ(zspvSelectMode(&many, nullptr, 99, 0, 0, &mode), zspStsBadArgErr);
    constexpr std::int32_t kOutside[][3] = {
        {16, 0, 0}, {-1, 0, 0}, {0, -2, 0}, {0, 15, 0}, {0, 0, -1}};
    for (const auto& [requested, current, frames] : kOutside)
        EXPECT_EQ(zspvSelectMode(&kAmr, nullptr, requested, current, frames, &mode),
                  zspStsRangeErr);
    EXPECT_EQ(mode, 77);
    EXPECT_EQ(zspvSelectMode(&kAmr, nullptr, 5, 0, 0, &mode), zspStsNoErr);
    EXPECT_EQ(mode, 5);
}

} // namespace
