// The exports on floats, each on many frames of a signal, for the tests of denormal numbers.
#pragma once

#include "core/entries.hpp"
#include "core/state.hpp"
#include "tests/core/denormals_states.hpp"
#include "tests/support/samples.hpp"
#include "zspsc.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <vector>

namespace zsp::test::denormals {

using Floats = std::vector<float>;

inline constexpr std::size_t kBands = 19, kTaps = 5;

/// Calls either the export or what stands behind it.
struct Way {
    bool direct;

    template <typename F>
    F* operator()(F* exported, F* entry) const
    {
        return direct ? entry : exported;
    }
};
#define ZSP_WAY(name) way(&::name, &zsp::entry::name) // inside of a case

/// A signal as frames of samples or of bins, whose end repeats.
struct Signal {
    Floats samples;

    const float* frame(std::size_t i, std::size_t count) const
    {
        return &samples[i * count % (samples.size() - count + 1)];
    }
    std::vector<Zsp32fc> bins(std::size_t i, std::size_t count) const
    {
        std::vector<Zsp32fc> values(count);
        std::memcpy(values.data(), frame(i, 2 * count), 2 * count * sizeof(float));
        return values;
    }
};

template <typename T>
void append(Floats& results, const T* values, std::size_t count)
{
    static_assert(sizeof(T) % sizeof(float) == 0);
    const std::size_t old = results.size();
    results.resize(old + count * sizeof(T) / sizeof(float));
    std::memcpy(&results[old], values, count * sizeof(T));
}

/// A canceller with filters of any taps.
struct FilledCanceller : Canceller {
    FilledCanceller() : Canceller(kBands, kTaps)
    {
        Samples samples(5);
        for (std::size_t t = 0; t < kTaps; ++t)
            for (auto* filter : {&adapt, &fixed})
                for (std::size_t k = 0; k < kBands; ++k)
                    filter->out[t][k] = {samples.floats(1, 1)[0], samples.floats(1, 1)[0]};
    }
    /// The four arrays of powers.
    void appendPowers(Floats& results)
    {
        append(results, static_cast<float*>(zsp::alignUp(controller.data(), 16)) + 24, 4 * kBands);
    }
};

/// One export on many frames of a signal: outputs and what it keeps.
struct Case {
    const char* name;
    double first, last; // powers of ten between which a signal meets the smallest numbers
    std::function<Floats(Way, const Signal&)> run;
};

inline constexpr std::size_t kFrames = 300;

inline const Case kCases[] = {
    {"zspsPreemphasize_32f_I", -36, -46,
     [](Way way, const Signal& signal) {
         Floats results;
         float memory = 0;
         for (std::size_t i = 0; i < kFrames; ++i) {
             Floats x(signal.frame(i, 40), signal.frame(i, 40) + 40);
             ZSP_WAY(zspsPreemphasize_32f_I)(0.68F, x.data(), 40, &memory);
             append(results, x.data(), x.size());
         }
         return results;
     }},
    {"zspsAutoCorrLagMax_32f", -18, -23,
     [](Way way, const Signal& signal) {
         Floats results;
         for (std::size_t i = 0; i < kFrames; ++i) {
             float most = 0;
             std::int32_t lag = 0;
             ZSP_WAY(zspsAutoCorrLagMax_32f)(signal.frame(i, 60) + 20, 40, 5, 20, &most, &lag);
             results.push_back(most);
         }
         return results;
     }},
    {"zspsSubbandAnalysis_32f32fc", -36, -46,
     [](Way way, const Signal& signal) {
         Floats results;
         Bank bank;
         std::array<Zsp32fc, 33> bins;
         for (std::size_t i = 0; i < kFrames; ++i) {
             ZSP_WAY(zspsSubbandAnalysis_32f32fc)
             (signal.frame(i, 44), bins.data(), bank.state.data(), bank.work.data());
             append(results, bins.data(), bins.size());
         }
         return results;
     }},
    {"zspsSubbandSynthesis_32fc32f", -36, -46,
     [](Way way, const Signal& signal) {
         Floats results;
         Bank bank;
         std::array<float, 44> frame;
         for (std::size_t i = 0; i < kFrames; ++i) {
             ZSP_WAY(zspsSubbandSynthesis_32fc32f)
             (signal.bins(i, 33).data(), frame.data(), bank.state.data(), bank.work.data());
             append(results, frame.data(), frame.size());
         }
         return results;
     }},
    {"zspsToneDetect_EC_32f", -17, -46,
     [](Way way, const Signal& signal) {
         Floats results;
         alignas(16) std::array<float, 20> state;
         zspsToneDetectInit_EC_32f(state.data(), 8000);
         for (std::size_t i = 0; i < kFrames; ++i) {
             std::int32_t result = 0;
             ZSP_WAY(zspsToneDetect_EC_32f)(signal.frame(i, 40), 40, &result, state.data());
             append(results, &state[2], 2); // the powers
             append(results, &state[6], 2); // the resonator's outputs
         }
         return results;
     }},
    {"zspsSubbandAPControllerUpdate_EC_32f", -17, -23,
     [](Way way, const Signal& signal) {
         Floats results;
         FilledCanceller canceller;
         std::array<double, kBands> steps;
         for (std::size_t i = 0; i < kFrames; ++i) {
             canceller.receive(signal.bins(i, kBands).data());
             ZSP_WAY(zspsSubbandAPControllerUpdate_EC_32f)
             (canceller.far.in.data(), signal.bins(i, kBands).data(), steps.data(), 0.5F,
              canceller.controller.data());
             canceller.appendPowers(results);
         }
         return results;
     }},
    {"zspsSubbandController_EC_32f", -17, -23,
     [](Way way, const Signal& signal) {
         Floats results;
         FilledCanceller canceller;
         for (std::size_t i = 0; i < kFrames; ++i) {
             float factor = 0;
             ZSP_WAY(zspsSubbandController_EC_32f)
             (signal.bins(i, kBands).data(), signal.bins(i + 1, kBands).data(),
              canceller.adapt.out.data(), canceller.fixed.out.data(), &factor,
              canceller.controller.data());
             results.push_back(factor);
             canceller.appendPowers(results);
         }
         return results;
     }},
    {"zspsSubbandFilter_EC_32fc", -34, -46,
     [](Way way, const Signal& signal) {
         Floats results;
         FilledCanceller canceller;
         BinRows<Zsp32fc> errors(2, kBands);
         BinRows<float> powers(2, kBands);
         for (std::size_t i = 0; i < kFrames; ++i) {
             canceller.receive(signal.bins(i, kBands).data());
             ZSP_WAY(zspsSubbandFilter_EC_32fc)
             (signal.bins(i, kBands).data(), canceller.far.in.data(), canceller.adapt.in.data(),
              canceller.fixed.in.data(), canceller.variance.in.data(), errors.out[0], errors.out[1],
              powers.out[0], powers.out[1], kBands, kTaps);
             append(results, errors.out[0], kBands);
             append(results, errors.out[1], kBands);
         }
         return results;
     }},
    {"zspsSubbandAdapt_EC_32fc", -28, -34,
     [](Way way, const Signal& signal) {
         Floats results;
         FilledCanceller canceller;
         std::ranges::fill(canceller.adapt.values, Zsp32fc{});
         const Floats gain(kBands, 1e-9F), forget(kBands, 1e-4F);
         for (std::size_t i = 0; i < kFrames; ++i) {
             canceller.receive(signal.bins(i, kBands).data());
             ZSP_WAY(zspsSubbandAdapt_EC_32fc)
             (std::vector<Zsp32fc>(kBands, {1, -2}).data(), gain.data(), forget.data(),
              canceller.far.in.data(), canceller.adapt.out.data(), canceller.variance.out.data(),
              kBands, kTaps, 0.4F, 1e-9F);
         }
         for (std::size_t t = 0; t < kTaps; ++t)
             append(results, canceller.adapt.out[t], kBands);
         return results;
     }},
};

} // namespace zsp::test::denormals
