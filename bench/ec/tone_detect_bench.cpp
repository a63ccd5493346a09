// The disabling-tone detector over 10 ms of noise, of the tone, and of the silence after it.

#include "bench/support/peers.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "core/state.hpp"
#include "ec/tone_detect.hpp"
#include "zspsc/ec/tone.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace {

using namespace zsp::bench;
using zsp::ec::ToneDetectState;

enum Signal { noise, tone, silence };

std::vector<std::int16_t> make(Signal signal, std::size_t sampleFreq)
{
    WordPool pool(1);
    const auto words = pool.next(4096);
    std::vector<std::int16_t> samples(words.begin(), words.end());
    for (std::size_t i = 0; signal != noise && i < samples.size(); ++i) {
        const double angle =
            2 * std::numbers::pi * 2100 * static_cast<double>(i) / static_cast<double>(sampleFreq);
        samples[i] =
            signal == silence ? std::int16_t{0} : static_cast<std::int16_t>(8000 * std::sin(angle));
    }
    return samples;
}

/// Calls detect(samples) on block after block.
template <typename Sample, typename Detect>
void blocks(benchmark::State& state, Signal signal, Detect detect)
{
    const auto sampleFreq = static_cast<std::size_t>(state.range(0)), len = sampleFreq / 100;
    const auto words = make(signal, sampleFreq);
    const std::vector<Sample> samples(words.begin(), words.end());
    std::size_t at = 0;
    loop(state, len, [&] {
        at = at + 2 * len > samples.size() ? 0 : at + len;
        detect(&samples[at], len);
    });
}

using Kernel = bool (*)(ToneDetectState&, zsp::InF) noexcept;

template <Signal signal>
void detector(benchmark::State& state, Kernel kernel)
{
    alignas(16) std::array<std::byte, 80> storage;
    zspsToneDetectInit_EC_32f(storage.data(), static_cast<std::int32_t>(state.range(0)));
    auto& s = *zsp::alignedState<ToneDetectState>(storage.data());
    bool detected = false;
    if (signal == silence) { // what a tone leaves behind
        const auto words = make(tone, static_cast<std::size_t>(state.range(0)));
        kernel(s, std::vector<float>(words.begin(), words.end()));
    }
    blocks<float>(state, signal, [&](const float* samples, std::size_t len) {
        detected |= kernel(s, {samples, len});
    });
    benchmark::DoNotOptimize(detected);
}

template <Signal signal>
bool addSignal(const char* name)
{
    return add<Kernel>(name, detector<signal>, {{"scalar", zsp::ec::toneDetect}},
                       {{8000}, {16000}});
}

const bool registered = addSignal<noise>("toneDetect/noise") &&
                        addSignal<tone>("toneDetect/tone") &&
                        addSignal<silence>("toneDetect/silence");

#ifdef ZSPSC_PEER_SPANDSP
// The peer's detector of the same tone with phase reversals, at its only rate.
void spandsp(benchmark::State& state, Signal signal)
{
    modem_connect_tones_rx_state_t* peer =
        modem_connect_tones_rx_init(nullptr, MODEM_CONNECT_TONES_ANS_PR, nullptr, nullptr);
    blocks<std::int16_t>(state, signal, [peer](const std::int16_t* samples, std::size_t len) {
        modem_connect_tones_rx(peer, samples, static_cast<int>(len));
    });
    modem_connect_tones_rx_free(peer);
}

BENCHMARK_CAPTURE(spandsp, noise, noise)->Name("toneDetect/noise/spandsp")->Arg(8000);
BENCHMARK_CAPTURE(spandsp, tone, tone)->Name("toneDetect/tone/spandsp")->Arg(8000);
BENCHMARK_CAPTURE(spandsp, silence, silence)->Name("toneDetect/silence/spandsp")->Arg(8000);
#endif

} // namespace
