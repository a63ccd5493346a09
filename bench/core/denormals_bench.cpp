// What silence costs: every export on float samples with speech, with what fades through the
// smallest normal numbers, and with silence after speech. The three times belong together; without
// care for denormal numbers the last two are up to ten times the first.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "tests/core/denormals_states.hpp"
#include "zspsc/correlation.h"
#include "zspsc/ec/filters.h"
#include "zspsc/ec/tone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using namespace zsp::bench;
using zsp::test::denormals::Bank;
using zsp::test::denormals::Canceller;

/// Noise whose level falls evenly, by the power of ten, over the whole length; again and again.
class Fading {
  public:
    Fading(double first, double last) : samples_(kSize)
    {
        WordPool pool(1);
        for (std::size_t i = 0; i < kSize; i += kBlock) {
            const auto words = pool.next(kBlock);
            for (std::size_t k = 0; k < kBlock; ++k) {
                const double share = static_cast<double>(i + k) / kSize;
                samples_[i + k] = static_cast<float>(
                    words[k] / 32768.0 * std::pow(10.0, first + share * (last - first)));
            }
        }
    }
    explicit Fading(float /*silence*/) : samples_(kSize) {}

    const float* next(std::size_t count)
    {
        position_ = position_ + 2 * count > kSize ? 0 : position_ + count;
        return &samples_[position_];
    }
    const Zsp32fc* nextBins(std::size_t count)
    {
        return reinterpret_cast<const Zsp32fc*>(next(2 * count));
    }

  private:
    static constexpr std::size_t kSize = 65536, kBlock = 1024;
    std::vector<float> samples_;
    std::size_t position_ = 0;
};

/// Registers the three runs of a job, which is made anew for each and called with a signal. The
/// exponents say where the job meets the smallest numbers: at samples, or at their squares.
template <typename Job>
bool addJob(const std::string& name, double first, double last)
{
    const auto run = [](benchmark::State& state, const Fading& speech, Fading signal) {
        Job job;
        Fading before = speech;
        for (int i = 0; i < 300; ++i)
            job(before);
        for (int i = 0; i < 3000; ++i)
            job(signal);
        for (auto _ : state) {
            job(signal);
            benchmark::ClobberMemory();
        }
    };
    const Fading speech(3.5, 3.5);
    const auto add = [&](const char* signal, const Fading& samples) {
        benchmark::RegisterBenchmark(("fading/" + name + "/" + signal).c_str(), run, speech,
                                     samples);
    };
    add("speech", speech);
    add("fading", Fading(first, last));
    add("silence", Fading(0.0F));
    return true;
}

struct Preemphasize {
    void operator()(Fading& signal)
    {
        std::copy_n(signal.next(160), 160, block.begin());
        zspsPreemphasize_32f_I(0.68F, block.data(), 160, &memory);
    }
    std::array<float, 160> block{};
    float memory = 0;
};

struct AutoCorrLagMax {
    void operator()(Fading& signal)
    {
        zspsAutoCorrLagMax_32f(signal.next(320) + 143, 160, 20, 143, &most, &lag);
    }
    float most = 0;
    std::int32_t lag = 0;
};

struct Analysis : Bank {
    void operator()(Fading& signal)
    {
        zspsSubbandAnalysis_32f32fc(signal.next(44), bins.data(), state.data(), work.data());
    }
    std::array<Zsp32fc, 33> bins{};
};

struct Synthesis : Bank {
    void operator()(Fading& signal)
    {
        zspsSubbandSynthesis_32fc32f(signal.nextBins(33), frame.data(), state.data(), work.data());
    }
    std::array<float, 44> frame{};
};

struct ToneDetect {
    ToneDetect() { zspsToneDetectInit_EC_32f(state.data(), 8000); }
    void operator()(Fading& signal)
    {
        zspsToneDetect_EC_32f(signal.next(80), 80, &result, state.data());
    }
    std::array<std::byte, 80> state{};
    std::int32_t result = 0;
};

constexpr std::size_t kBands = 33, kTaps = 55;

struct Steps : Canceller {
    Steps() : Canceller(kBands, kTaps) {}
    void operator()(Fading& signal)
    {
        receive(signal.nextBins(kBands));
        zspsSubbandAPControllerUpdate_EC_32f(far.in.data(), signal.nextBins(kBands), steps.data(),
                                             0.5F, controller.data());
    }
    std::array<double, kBands> steps{};
};

struct Control : Canceller {
    Control() : Canceller(kBands, kTaps) {}
    void operator()(Fading& signal)
    {
        const Zsp32fc* errors = signal.nextBins(kBands);
        zspsSubbandController_EC_32f(errors, errors, adapt.out.data(), fixed.out.data(), &factor,
                                     controller.data());
    }
    float factor = 0;
};

struct Filter : Canceller {
    Filter() : Canceller(kBands, kTaps)
    {
        for (auto* filter : {&adapt, &fixed})
            std::ranges::fill(filter->values, Zsp32fc{0.01F, -0.02F});
    }
    void operator()(Fading& signal)
    {
        receive(signal.nextBins(kBands));
        zspsSubbandFilter_EC_32fc(signal.nextBins(kBands), far.in.data(), adapt.in.data(),
                                  fixed.in.data(), variance.in.data(), errors[0].data(),
                                  errors[1].data(), powers[0].data(), powers[1].data(), kBands,
                                  kTaps);
    }
    std::array<Zsp32fc, kBands> errors[2];
    std::array<float, kBands> powers[2];
};

struct Adapt : Canceller {
    Adapt() : Canceller(kBands, kTaps)
    {
        gain.fill(1e-9F);
        forget.fill(1e-4F);
    }
    void operator()(Fading& signal)
    {
        receive(signal.nextBins(kBands));
        zspsSubbandAdapt_EC_32fc(signal.nextBins(kBands), gain.data(), forget.data(), far.in.data(),
                                 adapt.out.data(), variance.out.data(), kBands, kTaps, 0.4F, 1e-9F);
    }
    std::array<float, kBands> gain, forget;
};

const bool registered[] = {
    addJob<Preemphasize>("preemphasize", -36, -46),
    addJob<AutoCorrLagMax>("autoCorrLagMax", -18, -23),
    addJob<Analysis>("subbandAnalysis", -36, -46),
    addJob<Synthesis>("subbandSynthesis", -36, -46),
    addJob<ToneDetect>("toneDetect", -17, -23),
    addJob<Steps>("stepSizes", -17, -23),
    addJob<Control>("controller", -17, -23),
    addJob<Filter>("subbandFilter", -34, -46),
    addJob<Adapt>("subbandAdapt", -17, -46),
};

} // namespace
