// The echo canceller beside SpeexDSP's, on noise through a decaying path; 10 ms a step.
// load: share of one core in real time, as this processor runs it.

#include "bench/support/peers.hpp"
#include "signals/room.hpp"
#include "zspvoice.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using namespace zsp::signals;

/// Four seconds of far end and microphone, again and again.
class Signals {
  public:
    explicit Signals(int rate)
        : frame_(static_cast<std::size_t>(rate) / 100),
          call_(simulateCall(talk(rate, 1), talk(rate, 2),
                             {.path = hybridResponse(rate, 5, 60, 10, 1)}))
    {
    }

    void next() { position_ = (position_ + frame_) % call_.far.size(); }
    void fallSilent()
    {
        for (auto* words : {&call_.far, &call_.mic})
            std::ranges::fill(*words, std::int16_t{0});
    }
    std::span<const std::int16_t> far() const { return part(call_.far); }
    std::span<const std::int16_t> mic() const { return part(call_.mic); }

  private:
    static std::vector<std::int16_t> talk(int rate, std::uint32_t seed)
    {
        Noise noise(seed);
        std::vector<std::int16_t> words(static_cast<std::size_t>(4 * rate));
        for (std::size_t n = 0; n < words.size(); ++n) {
            const double loudness = std::sin(static_cast<double>(n) / rate * 4 * seed);
            words[n] = static_cast<std::int16_t>(3000 * std::max(0.0, loudness) * noise.uniform());
        }
        return words;
    }
    std::span<const std::int16_t> part(const std::vector<std::int16_t>& words) const
    {
        return std::span(words).subspan(position_, frame_);
    }

    std::size_t frame_, position_ = 0;
    Call call_;
};

void setLoad(benchmark::State& state)
{
    state.counters["load"] = benchmark::Counter(
        0.01, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void runOurs(benchmark::State& state, bool silent)
{
    Signals signals(static_cast<int>(state.range(0)));
    ZspvEchoConfig config{};
    config.structSize = sizeof config;
    config.sampleRate = static_cast<std::int32_t>(state.range(0));
    config.tailMs = static_cast<std::int32_t>(state.range(1));
    config.suppressor = zspvOn;
    ZspvEcho* echo = nullptr;
    if (zspvEchoCreate(&config, &echo) != zspStsNoErr) return state.SkipWithError("no canceller");
    std::array<std::int16_t, 160> out{};
    for (int i = 0; silent && i < 800; ++i) { // what decays does so in the second half of them
        if (i == 400) signals.fallSilent();
        zspvEchoProcess(echo, signals.far().data(), signals.mic().data(), out.data(),
                        static_cast<std::int32_t>(signals.far().size()));
        signals.next();
    }
    for (auto _ : state) {
        zspvEchoProcess(echo, signals.far().data(), signals.mic().data(), out.data(),
                        static_cast<std::int32_t>(signals.far().size()));
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        signals.next();
    }
    zspvEchoDestroy(echo);
    setLoad(state);
}
BENCHMARK_CAPTURE(runOurs, speech, false)
    ->Name("echoCanceller/zsp")
    ->Args({16000, 128})
    ->Args({8000, 64});
BENCHMARK_CAPTURE(runOurs, silence, true)
    ->Name("echoCanceller/zsp/silence")
    ->Args({16000, 128})
    ->Args({8000, 64});

#ifdef ZSPSC_PEER_SPEEXDSP
/// With its residual echo suppressor, as ours.
void runSpeex(benchmark::State& state)
{
    int rate = static_cast<int>(state.range(0));
    const int tail = static_cast<int>(state.range(1)), frame = rate / 100;
    Signals signals(rate);
    SpeexEchoState* echo = speex_echo_state_init(frame, rate * tail / 1000);
    speex_echo_ctl(echo, SPEEX_ECHO_SET_SAMPLING_RATE, &rate);
    SpeexPreprocessState* suppressor = speex_preprocess_state_init(frame, rate);
    speex_preprocess_ctl(suppressor, SPEEX_PREPROCESS_SET_ECHO_STATE, echo);
    std::array<std::int16_t, 160> out{};
    for (auto _ : state) {
        speex_echo_cancellation(echo, signals.mic().data(), signals.far().data(), out.data());
        speex_preprocess_run(suppressor, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        signals.next();
    }
    speex_preprocess_state_destroy(suppressor);
    speex_echo_state_destroy(echo);
    setLoad(state);
}
BENCHMARK(runSpeex)->Name("echoCanceller/speexdsp")->Args({16000, 128})->Args({8000, 64});
#endif

} // namespace
