// Autocorrelation, correlation and convolution: definition, fast version and plain loop on the same
// input.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/correlation/correlation.hpp"

#include <span>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;

using AutoCorr = bool (*)(zsp::In16, zsp::Out32, std::int32_t&);

void autoCorr(benchmark::State& state, AutoCorr kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kLoudSpeech);
    std::vector<std::int32_t> dst(static_cast<std::size_t>(state.range(1)));
    std::int32_t norm = 0;
    loop(state, len, [&] {
        if (!kernel(pool.next(len), dst, norm)) state.SkipWithError("too loud");
        benchmark::DoNotOptimize(dst.data());
        benchmark::DoNotOptimize(norm);
    });
}

/// Kernels of two sources, called with `more` behind the destination.
template <typename Out, typename... More>
auto twoSources(More... more)
{
    using Kernel = void (*)(zsp::In16, zsp::In16, std::span<Out>, More...);
    return [=](benchmark::State& state, Kernel kernel) {
        const auto len = static_cast<std::size_t>(state.range(0));
        WordPool a(1, kLoudSpeech), b(2, kLoudSpeech);
        std::vector<Out> dst(static_cast<std::size_t>(state.range(1)));
        loop(state, len, [&] {
            kernel(a.next(len), b.next(len), dst, more...);
            benchmark::DoNotOptimize(dst.data());
        });
    };
}

using CrossCorr = void (*)(zsp::In16, zsp::In16, zsp::Out32, int);
using NormM = void (*)(zsp::In16, zsp::In16, zsp::Out16);
using Conv = void (*)(zsp::In16, zsp::In16, zsp::Out16, int);

const bool registered[] = {
    add<AutoCorr>("autoCorr", autoCorr,
                  {{"definition", autoCorrNormEScalar},
                   {"avx2", autoCorrNormEAvx2},
                   {"plain", plain::autoCorr}},
                  {{240, 11}, {160, 9}}),
    add<CrossCorr>(
        "crossCorr", twoSources<std::int32_t>(4),
        {{"definition", crossCorrScalar}, {"avx2", crossCorrAvx2}, {"plain", plain::crossCorr}},
        {{240, 11}, {40, 40}}),
    add<NormM>("crossCorrNormM", twoSources<std::int16_t>(),
               {{"definition", crossCorrNormMScalar},
                {"avx2", crossCorrNormMAvx2},
                {"plain", plain::crossCorrNormM}},
               {{40, 40}}),
    add<Conv>("convPartial", twoSources<std::int16_t>(12),
              {{"definition", convPartialScalar},
               {"avx2", convPartialAvx2},
               {"plain", plain::convPartial}},
              {{40, 40}}),
};

} // namespace
