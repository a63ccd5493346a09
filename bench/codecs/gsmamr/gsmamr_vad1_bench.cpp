// One frame of 20 ms through the voice activity detector of GSM-AMR, option 1.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmamr/gsmamr_vad1.hpp"
#include "zspsc/gsmamr_vad.h"

#include <algorithm>

namespace {

using namespace zsp::bench;
using Detector = bool (*)(zsp::gsmamr::Vad1Source, Vad1State&, std::int16_t, std::int16_t);

void frames(benchmark::State& bench, Detector kernel)
{
    WordPool pool(1, kLoudSpeech);
    Vad1State state{};
    std::ranges::fill(state.old_level, std::int16_t{150});
    std::ranges::fill(state.ave_level, std::int16_t{150});
    std::ranges::fill(state.bckr_est, std::int16_t{150});
    state.corr_hp_fast = 13106;
    loop(bench, std::size_t{160}, [&] {
        benchmark::DoNotOptimize(
            kernel(pool.next(zsp::gsmamr::kVad1Source).first<200>(), state, 0, 13106));
    });
}

const bool registered = add<Detector>(
    "vad1", frames, {{"definition", zsp::gsmamr::vad1Scalar}, {"avx2", zsp::gsmamr::vad1Avx2}});

} // namespace
