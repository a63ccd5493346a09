// A controller and its filters, for tests.
#pragma once

#include "core/state.hpp"
#include "ec/subband_controller.hpp"
#include "tests/support/rows.hpp"
#include "zspsc/ec/controller.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace zsp::test {

using ec::ControllerState;

using Vectors = Rows<Zsp32fc>;

/// A controller in a buffer of the reported size at an odd address, with its filters.
struct Canceller {
    Canceller(std::int32_t numBands, std::int32_t numTaps, std::int32_t frameSize = 40,
              std::int32_t sampleFreq = 16000)
        : bands(static_cast<std::size_t>(numBands)), taps(static_cast<std::size_t>(numTaps)),
          history(taps, bands), adapt(taps, bands), fixed(taps, bands), errors(2, bands),
          steps(bands)
    {
        std::int32_t size = 0;
        EXPECT_EQ(
            zspsSubbandControllerGetSize_EC_32f(numBands, frameSize, numTaps, sampleFreq, &size),
            zspStsNoErr);
        EXPECT_EQ(size, 16 * numBands + 112);
        buffer.resize(static_cast<std::size_t>(size) + 1);
        EXPECT_EQ(
            zspsSubbandControllerInit_EC_32f(&buffer[1], numBands, frameSize, numTaps, sampleFreq),
            zspStsNoErr);
    }

    ControllerState& state() { return *alignedState<ControllerState>(&buffer[1]); }

    void update(float mu, const Zsp32fc* ref = nullptr)
    {
        EXPECT_EQ(zspsSubbandAPControllerUpdate_EC_32f(history.in.data(), ref, steps.data(), mu,
                                                       &buffer[1]),
                  zspStsNoErr);
    }

    float control()
    {
        float factor = -1;
        EXPECT_EQ(zspsSubbandController_EC_32f(errors.in[0], errors.in[1], adapt.out.data(),
                                               fixed.out.data(), &factor, &buffer[1]),
                  zspStsNoErr);
        return factor;
    }

    /// The same errors in all bins.
    void setErrors(float adaptErr, float fixedErr)
    {
        errors.values[0].assign(bands, {adaptErr, 0});
        errors.values[1].assign(bands, {0, fixedErr});
    }

    std::size_t bands, taps;
    Vectors history, adapt, fixed, errors;
    std::vector<double> steps;
    std::vector<std::byte> buffer;
};

inline std::vector<float> powersOf(ControllerState& s)
{
    return {s.adaptErrPower, s.adaptErrPower + 4 * s.numBands};
}

inline void expectSameTaps(const Vectors& got, const Vectors& want, const std::string& what)
{
    for (std::size_t t = 0; t < want.values.size(); ++t)
        for (std::size_t k = 0; k < want.values[t].size(); ++k)
            ASSERT_TRUE(got.values[t][k].re == want.values[t][k].re &&
                        got.values[t][k].im == want.values[t][k].im)
                << what << ", tap " << t << ", bin " << k;
}

} // namespace zsp::test
