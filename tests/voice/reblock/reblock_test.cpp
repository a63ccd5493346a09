// The re-blocker against a plain queue.

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

using namespace zsp::test;

constexpr int kFrame = 20, kBlock = 30;

std::int32_t sizeOf(std::int32_t frame, std::int32_t block)
{
    std::int32_t size = 0;
    EXPECT_EQ(zspvReblockGetSize(frame, block, &size), zspStsNoErr);
    return size;
}

/// A re-blocker that holds so many samples.
Argument holding(int count)
{
    return state(static_cast<std::size_t>(sizeOf(kFrame, kBlock)), [count](void* memory) {
        ZspvReblock* reblock = nullptr;
        const std::vector<std::int16_t> samples(kBlock);
        EXPECT_EQ(zspvReblockInit(memory, sizeOf(kFrame, kBlock), kFrame, kBlock, &reblock),
                  zspStsNoErr);
        EXPECT_EQ(zspvReblockPush(reblock, samples.data(), count), zspStsNoErr);
    });
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspvReblockGetSize), {number(1), number(1048576), out<std::int32_t>(1)})
        .row({{0, number(0)}}, zspStsSizeErr)
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{0, number(1048577)}}, zspStsSizeErr)
        .row({{1, number(1048577)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvReblockInit),
             {state(static_cast<std::size_t>(sizeOf(kFrame, kBlock))),
              number(sizeOf(kFrame, kBlock)), number(kFrame), number(kBlock), out<ZspvReblock*>(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsSizeErr)
        .row({{1, number(sizeOf(kFrame, kBlock) - 1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvReblockReset), {holding(7)}),
    Contract(ZSP_NAMED(zspvReblockPush), {holding(7), in<std::int16_t>(42), number(42)})
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{2, number(43)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvReblockPull),
             {holding(kFrame), out<std::int16_t>(kFrame), number(kFrame), out<std::int32_t>(1)})
        .row({{2, number(kFrame - 1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvReblockFlush),
             {holding(7), out<std::int16_t>(kFrame), number(kFrame), out<std::int32_t>(1)})
        .row({{0, holding(kFrame)}}, zspStsSizeErr)
        .row({{2, number(kFrame - 1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvReblockGetHeld), {holding(7), out<std::int32_t>(1)}),
});

// Blocks of random length go in as the header allows it; what comes out is the same samples in
// frames, the rest filled up with zeros.
TEST(Reblock, NothingIsLostOrAdded)
{
    Samples random(3);
    for (int run = 0; run < 200; ++run) {
        const std::int32_t frame = 1 + random.below(400), block = 1 + random.below(400);
        ZspvReblock* reblock = nullptr;
        ASSERT_EQ(zspvReblockCreate(frame, block, &reblock), zspStsNoErr);
        const auto signal = random.words(static_cast<std::size_t>(random.below(4000)));
        std::vector<std::int16_t> got, one(static_cast<std::size_t>(frame));
        std::int32_t count = 0, held = 0;
        for (std::size_t at = 0; at < signal.size();) {
            const std::int32_t most =
                std::min(block, static_cast<std::int32_t>(signal.size() - at));
            const std::int32_t length = random.below(3) ? random.below(most + 1) : most;
            ASSERT_EQ(zspvReblockPush(reblock, signal.data() + at, length), zspStsNoErr);
            at += static_cast<std::size_t>(length);
            do {
                ASSERT_EQ(zspvReblockPull(reblock, one.data(), frame, &count), zspStsNoErr);
                got.insert(got.end(), one.begin(), one.begin() + count);
            } while (count > 0);
            ASSERT_EQ(zspvReblockGetHeld(reblock, &held), zspStsNoErr);
            ASSERT_EQ(static_cast<std::size_t>(held), at - got.size());
        }
        std::fill(one.begin(), one.end(), std::int16_t{99});
        ASSERT_EQ(zspvReblockFlush(reblock, one.data(), frame, &count), zspStsNoErr);
        ASSERT_EQ(count, held);
        got.insert(got.end(), one.begin(), one.begin() + count);
        ASSERT_EQ(got, signal);
        for (std::size_t i = static_cast<std::size_t>(count); i < one.size(); ++i)
            ASSERT_EQ(one[i], count > 0 ? 0 : 99);
        ASSERT_EQ(zspvReblockFlush(reblock, one.data(), frame, &count), zspStsNoErr);
        ASSERT_EQ(count, 0) << "flushed twice";
        zspvReblockDestroy(reblock);
    }
}

} // namespace
