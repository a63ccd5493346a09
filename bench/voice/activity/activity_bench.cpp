// One frame of 20 ms through each voice activity detector, on speech; the load is the share of one
// core in real time.

#include "bench/support/speech.hpp"
#include "zspvoice.h"

#include <benchmark/benchmark.h>

namespace {

void frame(benchmark::State& state, ZspvDetector detector, std::int32_t rate, const char* voice)
{
    ZspvActivityConfig config{};
    config.structSize = sizeof config;
    config.detector = detector;
    config.sampleRate = rate;
    ZspvActivity* activity = nullptr;
    if (zspvActivityCreate(&config, &activity) != zspStsNoErr)
        return state.SkipWithError("no detector");
    const std::int32_t count = rate / 50;
    zsp::bench::Blocks blocks(zsp::bench::speech(voice), static_cast<std::size_t>(count));
    ZspvActivityInfo info{};
    info.structSize = sizeof info;
    std::int64_t active = 0;
    for (auto _ : state) {
        zspvActivityProcess(activity, blocks.next().data(), count, &info);
        active += info.active;
    }
    zspvActivityDestroy(activity);
    state.counters["active"] =
        benchmark::Counter(static_cast<double>(active), benchmark::Counter::kAvgIterations);
    state.counters["load"] = benchmark::Counter(
        0.02, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

} // namespace

BENCHMARK_CAPTURE(frame, amr1, zspvDetectorAmr1, 8000, zsp::bench::kVoice8);
BENCHMARK_CAPTURE(frame, amr2, zspvDetectorAmr2, 8000, zsp::bench::kVoice8);
BENCHMARK_CAPTURE(frame, amrwb, zspvDetectorAmrWb, 16000, zsp::bench::kVoice16);
BENCHMARK_CAPTURE(frame, amrwb_12800, zspvDetectorAmrWb, 12800, zsp::bench::kVoice16);
