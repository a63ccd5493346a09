// The update of a canceller's taps: AVX2 against the definition, and its direction.

#include "ec/subband_filter.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/rows.hpp"
#include "zspsc/ec/filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace zsp::test;
using zsp::ec::adaptAvx2, zsp::ec::adaptScalar;

constexpr std::int32_t kBands = 33, kTaps = 5;
const double kNan = std::numeric_limits<double>::quiet_NaN();

template <typename T>
Argument pointers()
{
    static Rows<T> zero(kTaps, kBands);
    return in(zero.in);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSubbandAdapt_EC_32fc),
             {in<Zsp32fc>(kBands), in<float>(kBands), in<float>(kBands), pointers<Zsp32fc>(),
              pointers<Zsp32fc>(), pointers<float>(), number(kBands), number(kTaps), number(0.4),
              number(1e-9)})
        .row({{6, number(0)}}, zspStsSizeErr)
        .row({{6, number(-33)}}, zspStsSizeErr)
        .row({{7, number(0)}}, zspStsFIRLenErr)
        .row({{7, number(4098)}}, zspStsFIRLenErr)
        .row({{8, number(1.01)}}, zspStsRangeErr)
        .row({{8, number(-0.01)}}, zspStsRangeErr)
        .row({{8, number(kNan)}}, zspStsRangeErr)
        .row({{9, number(-1e-9)}}, zspStsRangeErr)
        .row({{9, number(kNan)}}, zspStsRangeErr),
});

/// One update: what steers it, and the taps with a value behind the last bin, which must stay.
struct Update {
    Update(std::size_t bands, std::size_t taps, std::size_t offset)
        : count(bands), err(1, bands, offset), gain(1, bands, offset), forget(1, bands, offset),
          history(taps, bands, offset), coefs(taps, bands + 1, offset),
          variance(taps, bands + 1, offset)
    {
    }

    void fill(Samples& samples, float limit)
    {
        err.fill(samples, limit);
        gain.fill(samples, 1 / limit);
        forget.fill(samples, 1);
        history.fill(samples, limit);
        coefs.fill(samples, 1);
        variance.fill(samples, 1);
    }

    zsp::ec::AdaptRule rule() const
    {
        return {{err.in[0], count}, gain.in[0], forget.in[0], 0.4F, 1e-9F};
    }
    zsp::ec::AdaptRows rows() const { return {history.in, coefs.out.data(), variance.out.data()}; }

    std::size_t count;
    Rows<Zsp32fc> err;
    Rows<float> gain, forget;
    Rows<Zsp32fc> history, coefs;
    Rows<float> variance;
};

TEST(SubbandAdapt, Avx2EqualsDefinition)
{
    Samples samples(83);
    for (const float limit : {1.0F, 5e5F, 1e19F, 1e-19F}) // up to overflow and down to denormals
        for (std::size_t bands = 1; bands <= 41; ++bands)
            for (const std::size_t taps : {1U, 2U, 7U, 54U}) {
                Update want(bands, taps, bands % 5), got(bands, taps, bands % 5);
                Samples same(static_cast<std::uint32_t>(samples.uniform(0, 1 << 30)));
                Samples again = same;
                want.fill(same, limit);
                got.fill(again, limit);
                adaptScalar(want.rule(), want.rows(), 0);
                adaptAvx2(got.rule(), got.rows());
                ASSERT_TRUE(want.coefs.equals(got.coefs) && want.variance.equals(got.variance))
                    << bands << " bins, " << taps << " taps, limit " << limit;
            }
}

// One tap by hand: with no forgetting it goes to what the error asks for, and its variance shrinks
// by what was learnt; with full forgetting the variance is the tap's energy and the floor.
TEST(SubbandAdapt, MovesTheTapAgainstItsError)
{
    const Zsp32fc err[2] = {{3, -1}, {3, -1}};
    const float gain[2] = {0.5F, 0.5F}, forget[2] = {0, 1};
    const Zsp32fc x[2] = {{2, 1}, {2, 1}};
    Zsp32fc w[2] = {{10, 20}, {10, 20}};
    float p[2] = {0.25F, 0.25F};
    const Zsp32fc* history[] = {x};
    Zsp32fc* coefs[] = {w};
    float* variance[] = {p};
    ASSERT_EQ(
        zspsSubbandAdapt_EC_32fc(err, gain, forget, history, coefs, variance, 2, 1, 0.5F, 0.125F),
        zspStsNoErr);
    for (const Zsp32fc& tap : w) { // (3 - j) conj(2 + j) = 5 - 5 j, times 0.5 * 0.25
        EXPECT_EQ(tap.re, 10.625F);
        EXPECT_EQ(tap.im, 19.375F);
    }
    EXPECT_EQ(p[0], 0.25F * (1 - 0.5F * 0.5F * 0.25F * 5));
    EXPECT_EQ(p[1], 10.625F * 10.625F + 19.375F * 19.375F + 0.125F);
}

} // namespace
