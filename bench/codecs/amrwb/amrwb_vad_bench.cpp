// One frame of 20 ms through the voice activity detector of AMR-WB.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/amrwb/amrwb_vad.hpp"
#include "zspsc/amrwb/vad.h"

namespace {

using namespace zsp::bench;
using Detector = bool (*)(zsp::amrwb::VadFrame, VadWbState&, std::int16_t&);

void frames(benchmark::State& bench, Detector kernel)
{
    WordPool pool(1, kLoudSpeech);
    VadWbState state{};
    zsp::amrwb::vadInit(state);
    std::int16_t tone = 0;
    loop(bench, zsp::amrwb::kVadFrame, [&] {
        benchmark::DoNotOptimize(
            kernel(pool.next(zsp::amrwb::kVadFrame).first<256>(), state, tone));
    });
}

const bool registered = add<Detector>(
    "amrwbVad", frames, {{"definition", zsp::amrwb::vadScalar}, {"avx2", zsp::amrwb::vadAvx2}});

} // namespace
