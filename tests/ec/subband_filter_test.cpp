// Both filters of a canceller: AVX2 against the definition, and the formulas.

#include "ec/subband_filter.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/rows.hpp"
#include "zspsc/ec/filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

namespace {

using namespace zsp::test;
using zsp::ec::filterAvx2, zsp::ec::filterScalar;

constexpr std::int32_t kBands = 33, kTaps = 5;

template <typename T>
Argument pointers()
{
    static Rows<T> zero(kTaps, kBands);
    return in(zero.in);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSubbandFilter_EC_32fc),
             {in<Zsp32fc>(kBands), pointers<Zsp32fc>(), pointers<Zsp32fc>(), pointers<Zsp32fc>(),
              pointers<float>(), out<Zsp32fc>(kBands), out<Zsp32fc>(kBands), out<float>(kBands),
              out<float>(kBands), number(kBands), number(kTaps)})
        .row({{9, number(0)}}, zspStsSizeErr)
        .row({{9, number(-33)}}, zspStsSizeErr)
        .row({{10, number(0)}}, zspStsFIRLenErr)
        .row({{10, number(-1)}}, zspStsFIRLenErr)
        .row({{10, number(4098)}}, zspStsFIRLenErr),
});

/// One frame with all it needs, and room for its results.
struct Frame {
    Frame(std::size_t bands, std::size_t taps, std::size_t offset)
        : src(1, bands, offset), history(taps, bands, offset), adapt(taps, bands, offset),
          fixed(taps, bands, offset), variance(taps, bands, offset), errors(2, bands + 1, offset),
          powers(2, bands + 1, offset)
    {
    }

    void fill(Samples& samples, float limit)
    {
        src.fill(samples, limit);
        history.fill(samples, limit);
        adapt.fill(samples, 1);
        fixed.fill(samples, 1);
        variance.fill(samples, 1);
        errors.fill(samples, 1);
        powers.fill(samples, 1);
    }

    zsp::ec::FilterRows rows() const
    {
        return {history.in, adapt.in.data(), fixed.in.data(), variance.in.data()};
    }
    zsp::ec::FilterResults results() const
    {
        return {errors.out[0], errors.out[1], powers.out[0], powers.out[1]};
    }

    Rows<Zsp32fc> src, history, adapt, fixed;
    Rows<float> variance;
    Rows<Zsp32fc> errors; // with a value behind the last bin, which no call may touch
    Rows<float> powers;
};

TEST(SubbandFilter, Avx2EqualsDefinition)
{
    Samples samples(81);
    for (const float limit : {1.0F, 5e5F, 1e19F, 1e-19F}) // up to overflow and down to denormals
        for (std::size_t bands = 1; bands <= 41; ++bands)
            for (const std::size_t taps : {1U, 2U, 7U, 54U}) {
                Frame want(bands, taps, bands % 5), got(bands, taps, bands % 5);
                Samples same(static_cast<std::uint32_t>(samples.uniform(0, 1 << 30)));
                Samples again = same;
                want.fill(same, limit);
                got.fill(again, limit);
                filterScalar(want.rows(), {want.src.in[0], bands}, want.results(), 0);
                filterAvx2(got.rows(), {got.src.in[0], bands}, got.results());
                ASSERT_TRUE(want.errors.equals(got.errors) && want.powers.equals(got.powers))
                    << bands << " bins, " << taps << " taps, limit " << limit;
            }
}

TEST(SubbandFilter, GivesTheFormulasOfItsComment)
{
    using Complex = std::complex<double>;
    const auto wide = [](Zsp32fc v) { return Complex(v.re, v.im); };
    constexpr std::size_t bands = 17, taps = 4097;
    Samples samples(82);
    Frame frame(bands, taps, 0);
    frame.fill(samples, 1000);
    ASSERT_EQ(zspsSubbandFilter_EC_32fc(
                  frame.src.in[0], frame.history.in.data(), frame.adapt.in.data(),
                  frame.fixed.in.data(), frame.variance.in.data(), frame.errors.out[0],
                  frame.errors.out[1], frame.powers.out[0], frame.powers.out[1], bands, taps),
              zspStsNoErr);
    for (std::size_t k = 0; k < bands; ++k) {
        Complex adapt = wide(frame.src.values[0][k]), fixed = adapt;
        double power = 0, residual = 0, size = std::abs(adapt);
        for (std::size_t t = 0; t < taps; ++t) {
            const Complex x = wide(frame.history.values[t][k]);
            adapt -= wide(frame.adapt.values[t][k]) * x;
            fixed -= wide(frame.fixed.values[t][k]) * x;
            power += std::norm(x);
            residual += frame.variance.values[t][k] * std::norm(x);
            size += std::abs(x);
        }
        // Sums of 4097 terms, each addition off by half a unit of the sum so far.
        EXPECT_LT(std::abs(wide(frame.errors.values[0][k]) - adapt), 1e-5 * size) << k;
        EXPECT_LT(std::abs(wide(frame.errors.values[1][k]) - fixed), 1e-5 * size) << k;
        EXPECT_NEAR(frame.powers.values[0][k] / power, 1, 1e-5) << k;
        EXPECT_NEAR(frame.powers.values[1][k], residual, 1e-5 * power) << k;
    }
}

} // namespace
