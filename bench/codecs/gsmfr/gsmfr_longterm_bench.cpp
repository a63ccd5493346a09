// The long-term predictor of GSM full rate, over sub-segments of noise.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_longterm.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

using Search = LongTerm (*)(InSegment, InPast) noexcept;
using Predict = void (*)(InSegment, InPast, LongTerm, Segment) noexcept;
using Synthesis = void (*)(InPulses, int, LongTerm, InPast, Segment) noexcept;

constexpr LongTerm kHow = {.lag = 77, .gain = 2};

void search(benchmark::State& state, Search kernel)
{
    WordPool pool(11, kLoudSpeech);
    loop(state, std::size_t{1}, [&] {
        const LongTerm found =
            kernel(pool.next(kSegment).first<kSegment>(), pool.next(kPast).first<kPast>());
        benchmark::DoNotOptimize(found.lag + found.gain);
    });
}

void predict(benchmark::State& state, Predict kernel)
{
    WordPool pool(12, kLoudSpeech);
    std::array<std::int16_t, kSegment> out;
    loop(state, std::size_t{1}, [&] {
        kernel(pool.next(kSegment).first<kSegment>(), pool.next(kPast).first<kPast>(), kHow, out);
    });
}

void synthesise(benchmark::State& state, Synthesis kernel)
{
    WordPool pool(17, kLoudSpeech);
    std::array<std::int16_t, kSegment> out;
    loop(state, std::size_t{1}, [&] {
        kernel(pool.next(kPulses).first<kPulses>(), 2, kHow, pool.next(kPast).first<kPast>(), out);
    });
}

const bool registered[] = {
    add<Search>("gsmfrLtpSearch", search,
                {{"definition", ltpSearchScalar}, {"avx2", ltpSearchAvx2}}),
    add<Predict>("gsmfrLongTermPredict", predict,
                 {{"definition", longTermPredictScalar}, {"avx2", longTermPredictAvx2}}),
    add<Synthesis>("gsmfrLongTermSynthesis", synthesise,
                   {{"definition", longTermSynthesisScalar}, {"avx2", longTermSynthesisAvx2}}),
};

} // namespace
